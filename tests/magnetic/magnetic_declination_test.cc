#include "geomath/magnetic/magnetic_declination.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "geomath/platform/zel_logging.h"
#include "tests/magnetic/coefficient_text.h"
#include "tests/support/reference_data.h"

#if !defined(_WIN32)
#include <unistd.h>
#endif

using namespace zel_cs::geomath;

namespace {

using Record = std::tuple<std::string, int, std::string>;
std::vector<Record> records;

struct Result {
  float declination = -1, inclination = -2, total = -3;
  bool operator==(const Result&) const = default;
};

class MagneticDeclination : public testing::Test {
 protected:
  void SetUp() override {
    records.clear();
    previous_ = zel_logging::SetErrorLogSink([](const char* file, int line, const char* text) {
      records.push_back({file, line, text});
    });
  }
  void TearDown() override { zel_logging::SetErrorLogSink(previous_); }

  static SYSTEMTIME Date(int year, int month, int day) {
    SYSTEMTIME date{};
    date.wYear = static_cast<unsigned short>(year);
    date.wMonth = static_cast<unsigned short>(month);
    date.wDay = static_cast<unsigned short>(day);
    return date;
  }
  static Result Compute(TMagneticDeclination object, float lat, float lon, float height,
                        const SYSTEMTIME& date) {
    Result r;
    EXPECT_TRUE(object.computeMagneticDeclination(lat, lon, height, date, r.declination,
                                                  r.inclination, r.total));
    return r;
  }

 private:
  zel_logging::ErrorLogSink previous_ = nullptr;
};

const Record kEnded{"MagneticDeclination", 88, ""};
const Record kBadDate{"MagneticDeclination", 124, ""};

// Technical report of WMM-2010: 2010.0 and 2012.5, which is 2 July of a leap year.
TEST_F(MagneticDeclination, PublishedValues) {
  struct Case {
    SYSTEMTIME date;
    float height, lat, lon;
    double decl, incl, total;
  };
  const Case cases[] = {
      {Date(2010, 1, 1), 0, 80, 0, -6.13, 82.98, 54756.2},
      {Date(2010, 1, 1), 100, 0, 120, 0.94, -16.62, 39090.1},
      {Date(2012, 7, 2), 0, -80, 240, 70.04, -72.53, 55755.7},
      {Date(2012, 7, 2), 100, 80, 0, -5.63, 83.05, 52648.9},
  };
  for (const Case& c : cases) {
    const Result r = Compute({}, c.lat, c.lon, c.height, c.date);
    EXPECT_NEAR(r.declination, c.decl, 0.005 + 1e-5);  // half a printed digit, single precision
    EXPECT_NEAR(r.inclination, c.incl, 0.005 + 1e-5);
    EXPECT_NEAR(r.total, c.total, 0.05 + 2e-3);
  }
  EXPECT_TRUE(records.empty());
}

// wmm2010_computed: 2016-01-01 and 2015-… extrapolated from the built-in model.
TEST_F(MagneticDeclination, LogsTheEndOfTheBuiltInModel) {
  const Result r = Compute({}, 50, 14.5f, 0.25f, Date(2016, 1, 1));
  EXPECT_FLOAT_EQ(r.declination, 3.519855508f);
  EXPECT_FLOAT_EQ(r.inclination, 65.928108092f);
  EXPECT_FLOAT_EQ(r.total, 48986.249828f);
  EXPECT_EQ(records, std::vector{kEnded});
}

TEST_F(MagneticDeclination, KeepsSilentInTheYearOfTheEnd) {
  Compute({}, 50, 14.5f, 0, Date(2015, 12, 31));
  EXPECT_TRUE(records.empty());
}

TEST_F(MagneticDeclination, LogsNoDateAndTakesTheYear) {
  const Result newYear = Compute({}, 50, 14.5f, 0, Date(2012, 1, 1));
  for (const SYSTEMTIME& date :
       {Date(2012, 13, 1), Date(2012, 2, 30), Date(2012, 1, 0), Date(2012, 65535, 65535)}) {
    records.clear();
    EXPECT_EQ(Compute({}, 50, 14.5f, 0, date), newYear);
    EXPECT_EQ(records, std::vector{kBadDate});
  }
  records.clear();
  Compute({}, 50, 14.5f, 0, Date(2016, 13, 1));
  EXPECT_EQ(records, (std::vector{kEnded, kBadDate}));
  records.clear();
  EXPECT_EQ(Compute({}, 50, 14.5f, 0, Date(2012, 0, 17)), newYear);  // month 0: the plain year
  EXPECT_TRUE(records.empty());
}

// The coefficients of the built-in model ten years later: the same field, and no end in 2015.
TEST_F(MagneticDeclination, UsesTheFileItCanRead) {
  const TemporaryFile file(CofText());
  TMagneticDeclination object(file.Path());
  const TMagneticDeclination copy(object);
  TMagneticDeclination assigned;
  assigned = object;
  const Result builtIn = Compute({}, 50, 14.5f, 0, Date(2012, 1, 1));
  EXPECT_EQ(Compute(object, 50, 14.5f, 0, Date(2022, 1, 1)), builtIn);
  EXPECT_EQ(Compute(copy, 50, 14.5f, 0, Date(2022, 1, 1)), builtIn);
  EXPECT_EQ(Compute(assigned, 50, 14.5f, 0, Date(2022, 1, 1)), builtIn);
  EXPECT_TRUE(records.empty());
}

TEST_F(MagneticDeclination, Published2025) {
  REQUIRE_REFERENCE_FILE(path, "wmm/WMM2025.COF");
  const std::string name = path.string();
  const Result r = Compute({name.c_str()}, -80, 240, 100, Date(2025, 1, 1));
  EXPECT_NEAR(r.declination, 68.21, 0.005 + 1e-5);
  EXPECT_NEAR(r.inclination, -72.19, 0.005 + 1e-5);
  EXPECT_NEAR(r.total, 52035.0, 0.05 + 4e-3);
  EXPECT_TRUE(records.empty());
}

std::string DecimalCommas(std::string text) {
  std::ranges::replace(text.begin() + static_cast<std::ptrdiff_t>(text.find('\n')), text.end(), '.',
                       ',');
  return text;
}

// Every kind of file that holds no model or a damaged one: the built-in one, whose end alone is logged.
TEST_F(MagneticDeclination, FallsBackSilently) {
  const Result builtIn = Compute({}, 50, 14.5f, 0, Date(2020, 3, 1));
  const auto expectFallback = [&](const char* path) {
    records.clear();
    EXPECT_EQ(Compute({path}, 50, 14.5f, 0, Date(2020, 3, 1)), builtIn) << path;
    EXPECT_EQ(records, std::vector{kEnded}) << path;
  };
  const std::string texts[] = {
      "",
      "\n",
      std::string(1000, '\0'),
      "letters and nothing else\n1 0 1 1 1 1\n",
      kCofHeader,                                   // cut off behind the header
      kCofHeader + "  1  0  -29404.5       0.0  ",  // cut off inside the first row
      kCofHeader + "  one  zero  -29404.5  0.0  6.7  0.0\n",
      kCofHeader + "  0  1  -29404.5  0.0  6.7  0.0\n",  // order above degree
      kCofHeader + CofRow(1, 0, 1, 1, 1, 1) + CofRow(30000, 1, 1, 1, 1, 1),
      CofText("").substr(0, 3) + "\n",
      DecimalCommas(CofText()),
      CofText().substr(0, CofText().find(" 12  0")),  // cut off after degree 11
  };
  for (const std::string& text : texts) {
    const TemporaryFile file(text);
    expectFallback(file.Path());
  }
  expectFallback("/no/such/file.COF");
  expectFallback(std::filesystem::temp_directory_path().string().c_str());
}

#if !defined(_WIN32)
TEST_F(MagneticDeclination, FallsBackWithoutPermission) {
  const TemporaryFile file(CofText());
  std::filesystem::permissions(file.Path(), std::filesystem::perms::none);
  const bool root = geteuid() == 0;
  constexpr uid_t kNobody = 65534;  // permissions do not bind the superuser
  if (root) {
    ASSERT_EQ(seteuid(kNobody), 0);
  }
  const Result withFile = Compute({file.Path()}, 50, 14.5f, 0, Date(2012, 1, 1));
  if (root) {
    ASSERT_EQ(seteuid(0), 0);
  }
  EXPECT_EQ(withFile, Compute({}, 50, 14.5f, 0, Date(2012, 1, 1)));
}
#endif

TEST_F(MagneticDeclination, TakesAnyNumbers) {
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  constexpr float kHuge = std::numeric_limits<float>::max();
  for (float bad : {kNan, kHuge, -kHuge, std::numeric_limits<float>::infinity()}) {
    Compute({}, bad, 0, 0, Date(2012, 1, 1));
    Compute({}, 0, bad, 0, Date(2012, 1, 1));
    Compute({}, 0, 0, bad, Date(2012, 1, 1));
  }
  EXPECT_TRUE(std::isnan(Compute({}, kNan, 0, 0, Date(2012, 1, 1)).declination));

  // Results may be stored where the arguments came from.
  const Result expected = Compute({}, 50, 14.5f, 0.25f, Date(2012, 1, 1));
  float a = 50, b = 14.5f, c = 0.25f;
  TMagneticDeclination().computeMagneticDeclination(a, b, c, Date(2012, 1, 1), a, b, c);
  EXPECT_EQ((Result{a, b, c}), expected);
}

TEST_F(MagneticDeclination, ManyThreads) {
  std::vector<Result> results(8);
  std::vector<std::thread> threads;
  for (Result& r : results)
    threads.emplace_back([&r] { r = Compute({}, 50, 14.5f, 0, Date(2012, 1, 1)); });
  for (std::thread& t : threads) t.join();
  for (const Result& r : results) EXPECT_EQ(r, results[0]);
}

}  // namespace
