#include "geomath/magnetic/magnetic_field.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "geomath/magnetic/coefficient_file.h"
#include "geomath/magnetic/magnetic_model.h"
#include "geomath/platform/decimal_year.h"
#include "geomath/simd/instruction_set.h"
#include "tests/support/reference_data.h"

using namespace zel_cs::geomath;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// X, Y, Z, H, F, I, D: the order of the published tables.
using Columns = std::array<double, 7>;
Columns InTableOrder(const MagneticElements& e) {
  return {e.x, e.y, e.z, e.h, e.f, e.inclination, e.declination};
}

struct Place {
  double year, height, latitude, longitude;
};
MagneticPoint Evaluate(const WMMtype_MagneticModel& model, const Place& at) {
  return MagneticField(model, at.year).At(at.latitude, at.longitude, at.height);
}

// Test values of the WMM-2010 technical report (Maus et al. 2010): year, height (km), latitude,
// longitude; X, Y, Z, H, F (nT), I, D (degrees); their yearly change, I and D in arc-minutes.
struct PublishedRow {
  Place at;
  Columns field, change;
};
constexpr PublishedRow kPublished2010[] = {
    {{2010, 0, 80, 0},
     {6649.5, -714.6, 54346.2, 6687.8, 54756.2, 82.98, -6.13},
     {3.4, 43.2, 29.7, -1.3, 29.3, 0.31, 22.25}},
    {{2010, 0, 0, 120},
     {39428.8, 664.9, -11683.8, 39434.5, 41128.9, -16.50, 0.97},
     {-2.0, -22.7, 57.3, -2.3, -18.5, 4.54, -1.98}},
    {{2010, 0, -80, 240},
     {5657.7, 15727.3, -53407.5, 16714.0, 55961.8, -72.62, 70.21},
     {22.4, 1.8, 89.3, 9.3, -82.5, 2.18, -4.20}},
    {{2010, 100, 80, 0},
     {6332.2, -729.1, 52194.9, 6374.0, 52582.6, 83.04, -6.57},
     {3.5, 41.6, 26.8, -1.3, 26.5, 0.30, 22.48}},
    {{2010, 100, 0, 120},
     {37452.0, 611.9, -11180.8, 37457.0, 39090.1, -16.62, 0.94},
     {-1.6, -20.9, 54.6, -1.9, -17.5, 4.56, -1.91}},
    {{2010, 100, -80, 240},
     {5484.3, 14762.8, -50834.8, 15748.6, 53218.3, -72.79, 69.62},
     {20.5, 1.0, 83.5, 8.1, -77.4, 2.10, -4.11}},
    {{2012.5, 0, 80, 0},
     {6658.0, -606.7, 54420.4, 6685.5, 54829.5, 83.00, -5.21},
     {3.4, 43.2, 29.7, -0.6, 29.4, 0.26, 22.26}},
    {{2012.5, 0, 0, 120},
     {39423.9, 608.1, -11540.5, 39428.6, 41082.8, -16.31, 0.88},
     {-2.0, -22.7, 57.3, -2.3, -18.3, 4.55, -1.98}},
    {{2012.5, 0, -80, 240},
     {5713.6, 15731.8, -53184.3, 16737.2, 55755.7, -72.53, 70.04},
     {22.4, 1.8, 89.3, 9.3, -82.4, 2.20, -4.19}},
    {{2012.5, 100, 80, 0},
     {6340.9, -625.1, 52261.9, 6371.6, 52648.9, 83.05, -5.63},
     {3.5, 41.6, 26.8, -0.6, 26.5, 0.25, 22.50}},
    {{2012.5, 100, 0, 120},
     {37448.1, 559.7, -11044.2, 37452.2, 39046.7, -16.43, 0.86},
     {-1.6, -20.9, 54.6, -1.9, -17.3, 4.57, -1.91}},
    {{2012.5, 100, -80, 240},
     {5535.5, 14765.4, -50625.9, 15768.9, 53024.9, -72.70, 69.45},
     {20.5, 1.0, 83.5, 8.2, -77.3, 2.12, -4.10}},
};

// Half a unit of the last printed digit, with room for the rounding of a value near a tie.
constexpr double kPrintedTenth = 0.05 + 1e-9;
constexpr double kPrintedHundredth = 0.005 + 1e-9;

TEST(MagneticField, Published2010) {
  const auto model = Wmm2010Model();
  for (const PublishedRow& row : kPublished2010) {
    SCOPED_TRACE(testing::Message() << row.at.year << " " << row.at.height << " " << row.at.latitude
                                    << " " << row.at.longitude);
    const MagneticPoint point = Evaluate(*model, row.at);
    const Columns field = InTableOrder(point.field), change = InTableOrder(point.yearlyChange);
    for (std::size_t i = 0; i < field.size(); ++i) {
      const bool angle = i >= 5;
      const double tolerance = angle ? kPrintedHundredth : kPrintedTenth;
      EXPECT_NEAR(field[i], row.field[i], tolerance) << "column " << i;
      EXPECT_NEAR(change[i] * (angle ? 60 : 1), row.change[i], tolerance) << "change " << i;
    }
  }
}

// The printed tables of the other models. `slack` is what a publisher's figure is off beyond half
// a unit of its last digit, the same in other evaluations.
struct PublishedTable {
  const char *model, *values;
  std::size_t rows;
  double slackNanotesla = 0, slackDegrees = 0;
};
constexpr PublishedTable kTables[] = {
    {"WMM2010", "wmm2010_test_values.csv", 12},
    {"WMM2015", "wmm2015_test_values.csv", 12},
    {"WMM2015v2", "wmm2015v2_test_values.csv", 12},
    // Printed from values rounded before: a yearly change of -0.0944 as -0.10, 0.07499 as 0.08.
    {"WMM2020", "wmm2020_test_values.csv", 12, 0, 7e-4},
    {"WMM2020", "wmm2020_test_values_100.csv", 100},
    {"WMM2025", "wmm2025_test_values.csv", 12},
    // Six decimals, of which three hold: X, H and F differ from other evaluations by 7e-4 nT.
    {"WMM2025", "wmm2025_test_values_100.csv", 100, 1e-3},
};

std::vector<std::string> Cells(const std::string& line) {
  std::vector<std::string> cells;
  std::istringstream stream(line);
  for (std::string cell; std::getline(stream, cell, ',');) cells.push_back(cell);
  return cells;
}

double HalfUnit(const std::string& printed) {
  const std::size_t point = printed.find('.');
  const std::size_t decimals = point == std::string::npos ? 0 : printed.size() - point - 1;
  return 0.5 * std::pow(10.0, -static_cast<double>(decimals)) + 1e-9;
}

class PublishedValues : public testing::TestWithParam<PublishedTable> {};

TEST_P(PublishedValues, EveryPrintedDigit) {
  const PublishedTable& table = GetParam();
  REQUIRE_REFERENCE_FILE(modelPath, std::string("wmm/") + table.model + ".COF");
  REQUIRE_REFERENCE_FILE(valuesPath, std::string("wmm/") + table.values);
  const auto model = ReadCoefficientFile(modelPath.string().c_str());
  ASSERT_TRUE(model);
  EXPECT_EQ(model->nMax, 12);

  std::ifstream file(valuesPath);
  std::string line;
  std::getline(file, line);
  const double angleUnit = line.find("arcmin") == std::string::npos ? 1 : 60;
  std::vector<std::vector<std::string>> rows;
  std::vector<double> heights, latitudes, longitudes;
  while (std::getline(file, line)) {
    rows.push_back(Cells(line));
    ASSERT_EQ(rows.back().size(), 18u) << line;
    heights.push_back(std::stod(rows.back()[1]));
    latitudes.push_back(std::stod(rows.back()[2]));
    longitudes.push_back(std::stod(rows.back()[3]));
  }
  ASSERT_EQ(rows.size(), table.rows);

  std::vector<MagneticPoint> results(rows.size());
  for (std::size_t row = 0; row < rows.size(); ++row) {
    SCOPED_TRACE(testing::Message() << "row " << row + 1);
    const auto& cells = rows[row];
    const auto number = [&](std::size_t i) { return std::stod(cells[i]); };
    MagneticField(*model, number(0))
        .AtBatch(latitudes.data(), longitudes.data(), heights.data(), rows.size(), results.data());
    const MagneticPoint& point = results[row];
    const Columns field = InTableOrder(point.field), change = InTableOrder(point.yearlyChange);
    for (std::size_t i = 0; i < field.size(); ++i) {
      const bool angle = i >= 5;
      const double slack = angle ? table.slackDegrees : table.slackNanotesla;
      EXPECT_NEAR(field[i], number(4 + i), HalfUnit(cells[4 + i]) + slack) << "column " << i;
      EXPECT_NEAR(change[i] * (angle ? angleUnit : 1), number(11 + i),
                  HalfUnit(cells[11 + i]) + slack)
          << "change " << i;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, PublishedValues, testing::ValuesIn(kTables), [](const auto& i) {
  std::string name = i.param.values;
  return name.substr(0, name.find('.'));
});

// Independent evaluation in double precision, printed to 1e-6 nT and 1e-9 degrees, agreeing with
// GeographicLib to 1.5e-6 nT; the declination is as good as 1.5e-6 nT across H.
constexpr double kComputedNanotesla = 2e-6;
constexpr double kComputedDegrees = 2e-9;

void ExpectComputed(const WMMtype_MagneticModel& model, const Place& at, const Columns& expected) {
  SCOPED_TRACE(testing::Message() << at.year << " " << at.latitude << " " << at.longitude);
  const Columns field = InTableOrder(Evaluate(model, at).field);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(field[i], expected[i], kComputedNanotesla) << i;
  const double degrees = kComputedDegrees + 57.3 * kComputedNanotesla / expected[3];
  EXPECT_NEAR(field[5], expected[5], kComputedDegrees);
  EXPECT_NEAR(field[6], expected[6], degrees);
}

// The poles with several longitudes, satellite height, dates before and after the model's years.
TEST(MagneticField, PolesHeightsAndExtrapolation) {
  const auto model = Wmm2010Model();
  constexpr double mid2014 = 2014 + 180.0 / 365;
  const std::pair<Place, Columns> rows[] = {
      {{mid2014, 0, 90, 0},
       {1925.364249, -297.572272, 56698.595792, 1948.223999, 56732.057441, 88.032030406,
        -8.785763126}},
      {{mid2014, 0, 90, 90},
       {297.572272, 1925.364249, 56698.595792, 1948.223999, 56732.057441, 88.032030406,
        81.214236874}},
      {{mid2014, 10, -90, 120},
       {-14330.041702, -8319.451068, -52143.166741, 16569.953568, 54712.642040, -72.370885937,
        -149.862257523}},
      {{2013, 850, 45, 45},
       {15872.588168, 1416.215700, 30370.622062, 15935.643133, 34297.513125, 62.313740686,
        5.098656849}},
      {{2009 + 151.0 / 365, 0.25, 50, 14.5},
       {19889.302673, 975.647503, 44536.134096, 19913.217944, 48785.279431, 65.909388798,
        2.808329295}},
      {{2016, 0.25, 50, 14.5},
       {19942.946834, 1226.699991, 44726.130516, 19980.638661, 48986.249828, 65.928108092,
        3.519855508}},
  };
  for (const auto& [at, expected] : rows) ExpectComputed(*model, at, expected);
}

TEST(MagneticField, ComputedPoints) {
  REQUIRE_REFERENCE_FILE(path, "wmm/wmm2010_computed.csv");
  const auto model = Wmm2010Model();
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  int rows = 0;
  for (; std::getline(file, line); ++rows) {
    const auto cells = Cells(line);
    ASSERT_EQ(cells.size(), 14u);
    const auto number = [&](std::size_t i) { return std::stod(cells[i]); };
    const auto year = DecimalYear(std::stoi(cells[0]), std::stoi(cells[1]), std::stoi(cells[2]));
    ASSERT_TRUE(year);
    EXPECT_NEAR(*year, number(3), 5.1e-11) << line;
    Columns expected;
    for (std::size_t i = 0; i < expected.size(); ++i) expected[i] = number(7 + i);
    ExpectComputed(*model, {*year, number(4), number(5), number(6)}, expected);
  }
  EXPECT_EQ(rows, 55);
}

// The sums term by term from the potential, differentiated in 40-digit arithmetic (mpmath).
TEST(MagneticField, HighPrecision) {
  constexpr double kStated = 1e-9;  // nT; 5e4 nT hold 7e-12
  const std::pair<Place, std::array<double, 3>> rows[] = {
      {{2014.5, 0.25, 50, 14.5}, {19930.72962172275, 1169.523935663009, 44682.85970095917}},
      {{2012.25, 100, -89, 120}, {-13187.13113969056, -7774.725601089712, -50784.78160826298}},
      {{2018, -1, 3, -170}, {32274.39659727267, 5157.298657150001, 2399.885784997971}},
  };
  const auto model = Wmm2010Model();
  for (const auto& [at, expected] : rows) {
    const MagneticElements e = Evaluate(*model, at).field;
    EXPECT_NEAR(e.x, expected[0], kStated);
    EXPECT_NEAR(e.y, expected[1], kStated);
    EXPECT_NEAR(e.z, expected[2], kStated);
  }
}

// One term alone, from the closed sum for the associated Legendre function and numeric
// differentiation of the potential in 60-digit arithmetic (mpmath).
TEST(MagneticField, SingleTermsUpToTheHighestDegree) {
  struct Case {
    int n, m;
    double g, h, latitude, longitude, height, x, y, z;
  };
  constexpr Case cases[] = {
      {20, 1, 1000, 500, 89.9999, -120, 2, -14115.0511306835, -9319.51950643891, 0.520995161662971},
      {133, 0, 1000, 0, -70, 33, 100, -2092.16547875849, 0, -1283.35542368922},
      {133, 60, 1000, -2000, 40, 33, 0, 7822.98879099797, 16523.09944847, -14199.190072415},
      {133, 133, 1000, 500, 10, -120, 2, -759.260342789146, -2925.02650987675, 4397.40887036704},
  };
  constexpr double kRelative = 1e-12;  // 133 steps of a recursion that loses a bit now and then
  for (const Case& c : cases) {
    const auto model = AllocateMagneticModel(c.n);
    ASSERT_TRUE(model);
    StoreTerm(*model, {c.n, c.m, c.g, c.h, 0, 0});
    const MagneticElements e = MagneticField(*model, 0).At(c.latitude, c.longitude, c.height).field;
    const double tolerance = kRelative * std::hypot(c.x, c.y, c.z);
    EXPECT_NEAR(e.x, c.x, tolerance) << c.n << " " << c.m;
    EXPECT_NEAR(e.y, c.y, tolerance) << c.n << " " << c.m;
    EXPECT_NEAR(e.z, c.z, tolerance) << c.n << " " << c.m;
  }
}

// The change of the vector is what a year makes of it, that of the other elements the slope.
TEST(MagneticField, YearlyChangeIsTheSlopeInTime) {
  const auto model = Wmm2010Model();
  constexpr double kStep = 1e-3;  // years; the curvature of D is below 1e-4 degrees per year²
  const MagneticPoint at = MagneticField(*model, 2012).At(55.75, 37.625, 0.125);
  const MagneticElements before =
      MagneticField(*model, 2012 - kStep).At(55.75, 37.625, 0.125).field;
  const MagneticElements after = MagneticField(*model, 2012 + kStep).At(55.75, 37.625, 0.125).field;
  const auto slope = [&](double MagneticElements::*e) {
    return (after.*e - before.*e) / (2 * kStep);
  };
  constexpr double kSlope = 1e-6;  // rounding of 5e4 nT over the step
  for (auto e : {&MagneticElements::x, &MagneticElements::y, &MagneticElements::z,
                 &MagneticElements::h, &MagneticElements::f, &MagneticElements::declination,
                 &MagneticElements::inclination, &MagneticElements::gridVariation})
    EXPECT_NEAR(at.yearlyChange.*e, slope(e), kSlope);
}

// Degrees above that of the secular variation stay as they are.
TEST(MagneticField, SecularVariationEndsAtItsDegree) {
  auto model = Wmm2010Model();
  auto truncated = Wmm2010Model();
  truncated->nMaxSecVar = 3;
  for (std::size_t i = TermCount(3); i < model->g.size(); ++i) model->gDot[i] = model->hDot[i] = 0;
  const auto a = MagneticField(*model, 2030).At(10, 20, 0);
  const auto b = MagneticField(*truncated, 2030).At(10, 20, 0);
  EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
}

// Convergences of PROJ 9.1.1 (proj -V, utm, WGS84); from latitude 55 the longitude itself.
TEST(MagneticField, GridVariation) {
  struct Case {
    double latitude, longitude, convergence;
  };
  constexpr Case cases[] = {
      {50, 14.5, -0.38302627},
      {40.75, -74, 0.65279824},
      {-33.875, 151.25, 0.97563212},
      {54, 179.5, 2.02298905},
      {54, -180.5, 2.02298905},
      {0, 120, 0},
      {55, 100.5, 100.5},
      {-55, 100.5, -100.5},
      {90, -170, -170},
      {50, 14.5 + 360, -0.38302627},
  };
  constexpr double kPrinted = 1e-8;
  const auto model = Wmm2010Model();
  const MagneticField field(*model, 2012.5);
  for (const Case& c : cases) {
    const MagneticElements e = field.At(c.latitude, c.longitude, 0).field;
    EXPECT_NEAR(std::remainder(e.gridVariation - (e.declination - c.convergence), 360), 0, kPrinted)
        << c.latitude << " " << c.longitude;
    EXPECT_LE(std::abs(e.gridVariation), 180);
  }
}

// A model up to the highest degree, its coefficients of a size with that of the Earth's field.
std::unique_ptr<WMMtype_MagneticModel> HighestDegreeModel() {
  auto model = AllocateMagneticModel(kMaxMagneticDegree);
  for (int n = 1; n <= kMaxMagneticDegree; ++n)
    for (int m = 0; m <= n; ++m) {
      const double size = 3e4 / (n * n);
      StoreTerm(*model,
                {n, m, size * std::sin(n + 7 * m), size * std::cos(3 * n - m), 0.01 * size, 1});
    }
  return model;
}

// Scattered points, rows shorter and longer than a block of any kernel, poles, borders of zones and
// of grids, numbers that are none: alone, in the batch and in a row, on every instruction set.
TEST(MagneticField, EveryFormGivesTheSameBits) {
  std::vector<double> latitudes, longitudes, heights;
  const auto add = [&](double latitude, double longitude, double height) {
    latitudes.push_back(latitude);
    longitudes.push_back(longitude);
    heights.push_back(height);
  };
  for (int i = 0; i < 103; ++i) add(-90 + 180.0 * i / 102, -400 + 7.7 * i, -1 + 8.5 * i);
  latitudes[50] = kNan;
  longitudes[51] = kInfinity;
  heights[52] = kNan;
  latitudes[53] = 1e300;
  longitudes[54] = -1e300;
  for (const auto& [latitude, length] : {std::pair{55.0, 5}, {-54.75, 200}, {90.0, 9}, {-0.0, 61}})
    for (int i = 0; i < length; ++i) add(latitude, -180 + 6.0 * i, 0.5);
  const std::size_t count = latitudes.size();

  const auto best = simd::ActiveInstructionSet();
  for (const auto& model : {Wmm2010Model(), HighestDegreeModel()}) {
    const MagneticField field(*model, 2013.25);
    simd::ForceInstructionSet(simd::InstructionSet::baseline);
    std::vector<MagneticPoint> alone, batch(count), row(1);
    for (std::size_t i = 0; i < count; ++i)
      alone.push_back(field.At(latitudes[i], longitudes[i], heights[i]));
    for (const auto set : {simd::InstructionSet::baseline, simd::InstructionSet::avx2,
                           simd::InstructionSet::avx512}) {
      simd::ForceInstructionSet(set);
      SCOPED_TRACE(testing::Message() << "degree " << model->nMax << " set " << int(set));
      EXPECT_EQ(
          field.AtBatch(latitudes.data(), longitudes.data(), heights.data(), count, batch.data()),
          count - 3);
      for (std::size_t i = 0; i < count; ++i) {
        if (i >= 50 && i <= 52) {
          EXPECT_TRUE(std::isnan(batch[i].field.declination)) << i;
          continue;
        }
        EXPECT_EQ(std::memcmp(&alone[i], &batch[i], sizeof batch[i]), 0) << i;
        EXPECT_EQ(field.AtRow(latitudes[i], heights[i], &longitudes[i], 1, row.data()), 1u);
        EXPECT_EQ(std::memcmp(&alone[i], row.data(), sizeof row[0]), 0) << i;
      }
    }
  }
  simd::ForceInstructionSet(best);
}

TEST(MagneticField, AnyNumberOfTurnsAndNoPoints) {
  const auto model = Wmm2010Model();
  const MagneticField field(*model, 2013.25);
  const MagneticPoint at = field.At(50, 14.5, 0.25);
  for (double turns : {2.0, -7.0, 1e6, -3e9}) {
    const MagneticPoint turned = field.At(50, 14.5 + 360 * turns, 0.25);
    EXPECT_EQ(std::memcmp(&at, &turned, sizeof at), 0) << turns;
  }
  EXPECT_EQ(field.AtBatch(nullptr, nullptr, nullptr, 0, nullptr), 0u);
  EXPECT_EQ(field.AtRow(50, 0, nullptr, 0, nullptr), 0u);
}

// Adjusting the coefficients or the field to a date is the same thing.
TEST(MagneticField, AnotherDate) {
  const auto model = Wmm2010Model();
  const auto elements = [](const MagneticPoint& p) { return InTableOrder(p.field); };
  constexpr double kRounding = 1e-9;
  for (double year : {2005.5, 2014.25, 2030.0}) {
    const Columns expected = elements(MagneticField(*model, year).At(-33.5, 151, 0.5));
    const Columns moved = elements(MagneticField(*model, 2012).At(-33.5, 151, 0.5, year));
    for (std::size_t i = 0; i < moved.size(); ++i) EXPECT_NEAR(moved[i], expected[i], kRounding);
  }
}

// A record whose lengths and degrees disagree is used as far as it goes.
TEST(MagneticField, TakesInconsistentRecords) {
  WMMtype_MagneticModel model = *Wmm2010Model();
  const double full = MagneticField(model, 2010).At(50, 14, 0).field.f;
  model.nMax = std::numeric_limits<int>::max();
  EXPECT_EQ(MagneticField(model, 2010).At(50, 14, 0).field.f, full);
  model.hDot.resize(20);
  EXPECT_NEAR(MagneticField(model, 2010).At(50, 14, 0).field.f, full, 0.05 * full);
  model.nMax = -1;
  EXPECT_EQ(MagneticField(model, 2010).At(50, 14, 0).field.f, 0);
  EXPECT_EQ(MagneticField({}, 2010).At(50, 14, 0).field.f, 0);
}

TEST(MagneticField, ModelYearsAndStatedUncertainty) {
  auto model = Wmm2010Model();
  EXPECT_TRUE(MagneticField(*model, 2010).InModelYears());
  EXPECT_TRUE(MagneticField(*model, 2015).InModelYears());
  EXPECT_FALSE(MagneticField(*model, 2015.01).InModelYears());
  EXPECT_FALSE(MagneticField(*model, 2009.99).InModelYears());
  EXPECT_FALSE(MagneticField(*model, 2012).Uncertainty(20000));

  model->modelName = "WMM-2025";
  const auto stated = MagneticField(*model, 2012).Uncertainty(10000);
  ASSERT_TRUE(stated);
  EXPECT_EQ(stated->f, 138);
  EXPECT_NEAR(stated->declination, std::sqrt(0.26 * 0.26 + 0.5417 * 0.5417), 1e-15);
  EXPECT_EQ(MagneticField(*model, 2012).Uncertainty(0)->declination, kInfinity);
}

// The field points north almost everywhere: the error of H is nearly that of X, the error across H
// (the declination's, times H) that of Y. F and I share those of H and Z.
TEST(MagneticField, StatedUncertaintiesAgreeAmongThemselves) {
  auto model = Wmm2010Model();
  for (const char* name : {"WMM-2015", "WMM-2015v2", "WMM-2020", "WMM-2025", "WMMHR-2025"}) {
    SCOPED_TRACE(name);
    model->modelName = name;
    const MagneticField field(*model, 2012);
    const auto weak = field.Uncertainty(1);
    ASSERT_TRUE(weak);
    EXPECT_TRUE(weak->y < weak->h && weak->h < weak->x);
    EXPECT_TRUE(weak->h < weak->f && weak->f <= weak->z);
    constexpr double kDegree = 3.14159265358979323846 / 180;
    EXPECT_NEAR(weak->declination * kDegree, weak->y, 0.08 * weak->y);
  }
}

// Rows at 2012.5 and 2020.0 of the tables of WMM-2010 and WMM-2020, at 2025.0 of WMM-2025, all at
// latitude 80 on the ellipsoid; a model serves from its epoch on.
TEST(MagneticField, TheBuiltInModelOfTheDate) {
  const std::pair<double, double> rows[] = {{2012.5, -5.21}, {2020, -1.28}, {2025, 1.28}};
  for (const auto& [year, declination] : rows)
    EXPECT_NEAR(MagneticField(year).At(80, 0, 0).field.declination, declination, kPrintedHundredth);
  const std::pair<double, const char*> names[] = {
      {1900, "WMM-2010"},    {2014.99, "WMM-2010"}, {2015, "WMM-2015v2"}, {2019.99, "WMM-2015v2"},
      {2024.99, "WMM-2020"}, {2025, "WMM-2025"},    {2100, "WMM-2025"}};
  const auto all = BuiltInMagneticModels();
  for (const auto& [year, name] : names) {
    EXPECT_EQ(BuiltInMagneticModel(year)->modelName, name) << year;
    EXPECT_EQ(ModelOfYear(all, year).modelName, name) << year;
  }
  EXPECT_FALSE(MagneticField(2009).InModelYears());
  EXPECT_TRUE(MagneticField(2030).InModelYears());
  EXPECT_FALSE(MagneticField(2030.1).InModelYears());
}

TEST(MagneticField, CompassZones) {
  EXPECT_EQ(CompassZoneOf(6000), CompassZone::sound);
  EXPECT_EQ(CompassZoneOf(5999.9), CompassZone::caution);
  EXPECT_EQ(CompassZoneOf(2000), CompassZone::caution);
  EXPECT_EQ(CompassZoneOf(1999.9), CompassZone::blackout);
  EXPECT_EQ(CompassZoneOf(kNan), CompassZone::sound);
}

}  // namespace
