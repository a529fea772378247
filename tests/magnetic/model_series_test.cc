#include "geomath/magnetic/model_series.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "geomath/magnetic/magnetic_field.h"
#include "geomath/platform/decimal_year.h"
#include "tests/magnetic/coefficient_text.h"
#include "tests/support/harmonic_model.h"
#include "tests/support/reference_data.h"

using namespace zel_cs::geomath;

namespace {

const std::string kShc =
    "# TEST 1\n# more\n1 1 3 2 1 1900.0 1910.0\n 1900.0 1905.0 1910.0\n"
    "1 0 -100 -110 -105.5\n1 1 10 20 40\n1 -1 5 5 7.5\n";

TEST(ModelSeries, ReadsEpochsAsLinearPieces) {
  const auto models = ParseModelSeries(kShc);
  ASSERT_EQ(models.size(), 2u);
  EXPECT_EQ(models[0].modelName, "TEST 1");
  EXPECT_EQ(models[1].epoch, 1905);
  EXPECT_EQ(models[1].coefficientFileEndDate, 1910);
  EXPECT_EQ(models[0].g, (std::vector<double>{0, -100, 10}));
  EXPECT_EQ(models[0].h, (std::vector<double>{0, 0, 5}));
  EXPECT_EQ(models[0].gDot, (std::vector<double>{0, -2, 2}));
  EXPECT_EQ(models[1].gDot, (std::vector<double>{0, 0.9, 4}));
  EXPECT_EQ(models[1].hDot, (std::vector<double>{0, 0, 0.5}));
  EXPECT_EQ(ModelOfYear(models, 1890).epoch, 1900);
  EXPECT_EQ(ModelOfYear(models, 1904.9).epoch, 1900);
  EXPECT_EQ(ModelOfYear(models, 1905).epoch, 1905);
  EXPECT_EQ(ModelOfYear(models, 1950).epoch, 1905);
}

TEST(ModelSeries, TakesTheOtherLayoutsAsASeriesOfOne) {
  const auto models = ParseModelSeries(CofText());
  ASSERT_EQ(models.size(), 1u);
  EXPECT_EQ(models[0].g, Wmm2010Model()->g);
  CoefficientFault fault;
  EXPECT_TRUE(ParseModelSeries(kCofHeader, &fault).empty());
  EXPECT_EQ(fault.line, 1);
  EXPECT_TRUE(ReadModelSeries("/no/such/file.shc", &fault).empty());
  EXPECT_EQ(fault.reason, "is no file");
}

TEST(ModelSeries, RefusesDamageAndSaysWhere) {
  const auto with = [](const std::string& part, const std::string& other) {
    std::string text = kShc;
    return text.replace(text.find(part), part.size(), other);
  };
  const struct {
    std::string text;
    long line;
    const char* reason;
  } cases[] = {
      {with("1 1 3 2 1", "1 1 3 3 1"), 3, "linear"},
      {with("1 1 3 2 1", "2 2 3 2 1"), 3, "degrees"},
      {with("1 1 3 2 1", "1 200 3 2 1"), 3, "degrees"},
      {with("1 1 3 2 1", "1 1 1 2 1"), 3, "two epochs"},
      {with("1905.0", "1900.0"), 4, "rise"},
      {with("1905.0 1910.0\n", "1905.0\n"), 4, "each epoch"},
      {with("-110", "-110,5"), 5, "decimal point"},
      {with("-105.5", ""), 5, "each epoch"},
      {with("-105.5", "-105.5 3"), 5, "more numbers"},
      {with("1 1 10", "1 2 10"), 6, "order"},
      {with("1 1 10", "1 0 10"), 6, "twice"},
      {kShc.substr(0, kShc.find("1 -1")), 6, "1 of the 3 rows"},
      {"# nothing else\n", 1, "lowest and highest degree"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    CoefficientFault fault;
    EXPECT_TRUE(ParseModelSeries(c.text, &fault).empty());
    EXPECT_EQ(fault.line, c.line);
    EXPECT_NE(fault.reason.find(c.reason), std::string::npos) << fault.reason;
  }
}

// 100 points of the publisher's calculator at 2010.0, where the 13th and 14th generation are the
// same, printed to 0.1 nT.
TEST(ModelSeries, InternationalReferenceFieldOf2010) {
  REQUIRE_REFERENCE_FILE(path, "igrf/IGRF14.shc");
  REQUIRE_REFERENCE_FILE(values, "igrf/igrf_2010_values.csv");
  const auto models = ReadModelSeries(path.string().c_str());
  ASSERT_EQ(models.size(), 26u);
  EXPECT_EQ(models.front().modelName, "IGRF 14");
  EXPECT_EQ(models.front().epoch, 1900);
  EXPECT_EQ(models.back().coefficientFileEndDate, 2030);
  constexpr double kPrinted = 0.05 + 1e-9;  // nT
  const auto rows = ReadRows(values);
  EXPECT_EQ(rows.size(), 100u);
  // 2010 ends one piece and begins the next.
  for (const auto* model : {&ModelOfYear(models, 2010), &ModelOfYear(models, 2009.999)}) {
    const MagneticField field(*model, 2010);
    EXPECT_TRUE(field.InModelYears());
    for (const auto& row : rows) {
      const MagneticElements e = field.At(row[1], row[2], row[3]).field;
      EXPECT_NEAR(e.x, row[4], kPrinted) << row[1] << " " << row[2];
      EXPECT_NEAR(e.y, row[5], kPrinted) << row[1] << " " << row[2];
      EXPECT_NEAR(e.z, row[6], kPrinted) << row[1] << " " << row[2];
    }
  }
}

// The publisher's table of the model of degree 133: date, height, latitude, longitude, D, I, H, X, Y,
// Z, F. Its six decimals hold for Y and Z; X, H and F differ from other evaluations by 7e-4 nT.
TEST(ModelSeries, HighResolutionModelOf2025) {
  REQUIRE_REFERENCE_FILE(path, "wmm/WMMHR2025.COF");
  REQUIRE_REFERENCE_FILE(values, "wmm/wmmhr2025_test_values_100.txt");
  const auto models = ReadModelSeries(path.string().c_str());
  ASSERT_EQ(models.size(), 1u);
  EXPECT_EQ(models[0].nMax, 133);
  const auto stated = MagneticField(models[0], 2025).Uncertainty(1000);
  ASSERT_TRUE(stated);
  EXPECT_NEAR(stated->declination, std::hypot(0.25, 5.205), 1e-12);
  constexpr double kWholeDecimals = 3e-6, kHorizontal = 1e-3;  // nT
  constexpr double kPrintedDegrees = 0.005 + 1e-9;
  int checked = 0;
  for (const auto& row : ReadRows(values, 18)) {
    if (row.size() < 11) continue;
    const MagneticElements e = MagneticField(models[0], row[0]).At(row[2], row[3], row[1]).field;
    EXPECT_NEAR(e.declination, row[4], kPrintedDegrees);
    EXPECT_NEAR(e.inclination, row[5], kPrintedDegrees);
    EXPECT_NEAR(e.h, row[6], kHorizontal);
    EXPECT_NEAR(e.x, row[7], kHorizontal);
    EXPECT_NEAR(e.y, row[8], kWholeDecimals);
    EXPECT_NEAR(e.z, row[9], kWholeDecimals);
    EXPECT_NEAR(e.f, row[10], kHorizontal);
    ++checked;
  }
  EXPECT_EQ(checked, 100);
}

}  // namespace
