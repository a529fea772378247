#include "files/words/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "files/words/name_match.h"

using namespace geomath_files;

namespace {

struct AngleCase {
  const char* text;
  AngleKind kind;
  double degrees;
};

constexpr auto kLat = AngleKind::latitude;
constexpr auto kLon = AngleKind::longitude;
constexpr double kLastPlace = 1e-14;  // degrees + minutes/60 + seconds/3600 in doubles

}  // namespace

TEST(AngleText, ReadsDegreesInEveryNotation) {
  constexpr AngleCase cases[] = {
      {"52.504167", kLat, 52.504167},
      {" +7.5 ", kLon, 7.5},
      {"-0.1278", kLon, -0.1278},
      {"5.25e1", kLat, 52.5},
      {"52 30 18", kLat, 52.505},
      {"-0 7 40.5", kLon, -(7 / 60.0 + 40.5 / 3600)},  // the sign survives zero degrees
      {"52:30:18", kLat, 52.505},
      {"52:30.3", kLat, 52.505},
      {"52d30m18s", kLat, 52.505},
      {"52d30m18sS", kLat, -52.505},
      {"52\xC2\xB0"
       "30'18\"N",
       kLat, 52.505},
      {"W 7\xC2\xB0 30\xE2\x80\xB2 36\xE2\x80\xB3", kLon, -7.51},
      {"7.5\xC2\xB0 W", kLon, -7.5},
      {"N52 30 18", kLat, 52.505},
      {"180E", kLon, 180},
      {"90 0 0 S", kLat, -90},
      {"-360", kLon, -360},
  };
  for (const AngleCase& c : cases) {
    const ParsedNumber parsed = ParseAngle(c.text, c.kind);
    EXPECT_TRUE(parsed) << c.text << ": " << parsed.problem;
    EXPECT_NEAR(parsed.value, c.degrees, kLastPlace) << c.text;
  }
}

TEST(AngleText, SaysWhatIsWrong) {
  struct Case {
    const char* text;
    AngleKind kind;
    const char* part;
  };
  constexpr Case cases[] = {
      {"", kLat, "empty"},
      {"nan", kLat, "not an angle"},
      {"inf", kLon, "not an angle"},
      {"52,5", kLat, "not an angle"},
      {"N", kLat, "not an angle"},
      {"-", kLat, "not an angle"},
      {"abc", kLon, "not an angle"},
      {"52 60 0", kLat, "60 or more"},
      {"52 0 60", kLat, "60 or more"},
      {"52.5 30 0", kLat, "decimals before"},
      {"1 2 3 4", kLat, "more than degrees"},
      {"-52 30 N", kLat, "sign and a hemisphere"},
      {"52 30 E", kLat, "no latitude"},
      {"7 30 N", kLon, "no longitude"},
      {"90.0001", kLat, "outside -90 to 90"},
      {"90 0 0.1", kLat, "outside -90 to 90"},
      {"361", kLon, "outside -360 to 360"},
  };
  for (const Case& c : cases) {
    const ParsedNumber parsed = ParseAngle(c.text, c.kind);
    EXPECT_FALSE(parsed) << c.text;
    EXPECT_NE(parsed.problem.find(c.part), std::string::npos) << c.text << ": " << parsed.problem;
  }
}

TEST(NumberText, AcceptsFiniteNumbersOnly) {
  EXPECT_EQ(ParseNumber(" -12.5\t").value, -12.5);
  EXPECT_EQ(ParseNumber("+1e3").value, 1000);
  for (const char* text : {"", " ", "nan", "-inf", "1e999", "12m", "1 2", "0x10", "+-1", "--1"})
    EXPECT_FALSE(ParseNumber(text)) << text;
  EXPECT_NE(ParseNumber("12,5").problem.find("decimal point"), std::string::npos);
}

TEST(NumberReader, SettlesOnTheMarkThatTheFirstNumberShows) {
  NumberReader german;
  EXPECT_EQ(german.Number("17").value, 17);  // shows none
  EXPECT_NE(german.Number("12,345").problem.find("thousands"), std::string::npos);
  EXPECT_EQ(german.Number("5932000,125").value, 5932000.125);
  EXPECT_EQ(german.Mark(), ',');
  EXPECT_EQ(german.Number(" -12,345 ").value, -12.345);
  EXPECT_EQ(german.Angle("50 26 19,5 N", kLat).value, 50 + 26 / 60.0 + 19.5 / 3600);
  EXPECT_NE(german.Number("1.234").problem.find("decimal point"), std::string::npos);
  EXPECT_NE(german.Number("1.234,5").problem.find("not a number"), std::string::npos);
  EXPECT_FALSE(german.Number("1,2,3"));

  NumberReader english;
  EXPECT_EQ(english.Number("12.5").value, 12.5);
  EXPECT_FALSE(english.Number("5932000,12"));
  EXPECT_FALSE(english.Number("5,932,000.12"));
  EXPECT_EQ(english.Mark(), '.');

  // Degrees have no thousands, no thousand begins with 0, and what is said beforehand needs no sign.
  EXPECT_EQ(NumberReader().Angle("7,125", kLon).value, 7.125);
  EXPECT_EQ(NumberReader().Number("0,125").value, 0.125);
  EXPECT_EQ(NumberReader(',').Number("12,345").value, 12.345);
}

// Beside the C library, whose conversions are correctly rounded: numbers of one to 19 figures, and halves
// of the last decimal.
TEST(NumberText, ReadsAndWritesToTheLastBit) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 200000; ++i) {
    std::string text = std::to_string(random() >> (random() % 60));
    if (i % 7 != 0) text.insert(random() % (text.size() + 1), 1, '.');
    if (i % 3 == 0) text.insert(0, "-");
    const double value = std::strtod(text.c_str(), nullptr);
    ASSERT_EQ(NumberReader().Number(" " + text).value, value) << text;

    const int decimals = static_cast<int>(random() % 13);
    const double half = std::round(value * 64) / 64;
    for (const double each : {value, half, value * 1e-9, value * 1e-16}) {
      char expected[64];
      std::snprintf(expected, sizeof expected, "%.*f", decimals, each);
      const bool zero = std::string(expected).find_first_not_of("-0.") == std::string::npos;
      std::string written = "x";
      AppendDecimals(written, each, decimals);
      ASSERT_EQ(written, std::string("x") + (expected + (zero && expected[0] == '-')))
          << text << ' ' << decimals;
    }
  }
}

TEST(AngleText, IsWrittenSoThatItReadsBack) {
  EXPECT_EQ(SexagesimalText(52.505, kLat, 1), "52 30 18.0 N");
  EXPECT_EQ(SexagesimalText(-(7 / 60.0 + 40.5 / 3600), kLon, 4), "0 07 40.5000 W");
  EXPECT_EQ(SexagesimalText(-0.99999999, kLat, 2), "1 00 00.00 S");  // 60 is carried over
  EXPECT_EQ(SexagesimalText(59.6 / 3600, kLon, 0), "0 01 00 E");
  EXPECT_EQ(SexagesimalText(-20.6668 / 3600, AngleKind::turn, 4), "-0 00 20.6668");
  EXPECT_EQ(SexagesimalText(305 + 1.71 / 3600, AngleKind::turn, 1), "305 00 01.7");
  EXPECT_EQ(ParseAngle("-0 00 20.6668", AngleKind::turn).value, -20.6668 / 3600);
  EXPECT_FALSE(ParseAngle("12 00 00 E", AngleKind::turn));
  constexpr double kHalfUnit = 0.5e-6 / 3600;  // degrees, of the last decimal
  for (double degrees = -179.98765; degrees < 180; degrees += 7.123456789) {
    const std::string text = SexagesimalText(degrees, kLon, 6);
    EXPECT_NEAR(ParseAngle(text, kLon).value, degrees, 1.01 * kHalfUnit) << text;
  }
}

TEST(SameName, IsFoldNameOfBoth) {
  for (const char* a : {"", "_", "Central Meridian", "central_meridian", "CentralMeridia",
                        "central-Meridian ", "x"})
    for (const char* b : {"", " - ", "CENTRALMERIDIAN", "Central Meridian1", "X", "y"})
      EXPECT_EQ(SameName(a, b), FoldName(a) == FoldName(b)) << a << " and " << b;
}

TEST(SplitNames, KeepsCommasInQuotationMarks) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(SplitNames(""), Names{});
  EXPECT_EQ(SplitNames("a, b ,c"), (Names{"a", "b", "c"}));
  EXPECT_EQ(SplitNames("\"North, m\",\"say \"\"E\"\"\",h"), (Names{"North, m", "say \"E\"", "h"}));
  EXPECT_EQ(SplitNames("a,,"), (Names{"a", "", ""}));
}
