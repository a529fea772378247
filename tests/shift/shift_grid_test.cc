#include "geomath/shift/shift_grid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/shift/ntv2_file.h"
#include "geomath/simd/instruction_set.h"
#include "tests/support/reference_data.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSecond = kRadPerArcSecond;
constexpr double kRoundTripRadians = 1.5e-14;  // 1e-4 mm on the ground
constexpr double kRoundTripMetres = 1e-7;
constexpr double kHeldPart = 6e-8;  // single precision, of a shift

// A part whose components come from functions of row and column, north first.
using NodeValue = double (*)(int row, int column, int component);
ShiftGridPart Part(int level, double south, double west, double northStep, double eastStep,
                   int rows, int columns, int components, NodeValue value) {
  ShiftGridPart part{"part", level, south, west, northStep, eastStep, rows, columns, {}, {}};
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j)
      for (int k = 0; k < components; ++k)
        part.values.push_back(static_cast<float>(value(i, j, k)));
  return part;
}

// Shifts of some arc-seconds that change from node to node as no surface does, up to 60 parts per
// million of the distance.
double Rough(int row, int column, int component) {
  return 4 * (component + 1) + 0.05 * std::sin(12.9898 * row + 78.233 * column + component);
}

std::unique_ptr<ShiftGrid> RoughNested() {
  ShiftGridDefinition definition;
  definition.components = ShiftComponents::horizontalAndVertical;
  definition.horizontalUnit = kSecond;
  definition.parts.push_back(Part(0, 0.8, 0.1, 0.004, 0.005, 12, 15, 3, Rough));
  // Its rim has other shifts than the parent: there is a step of up to 3 m on it.
  definition.parts.push_back(Part(1, 0.812, 0.12, 0.001, 0.001, 9, 11, 3, Rough));
  return ShiftGrid::Make(definition);
}

TEST(ShiftGrid, InverseUndoesForwardEverywhere) {
  const auto grid = RoughNested();
  ASSERT_TRUE(grid);
  std::mt19937_64 random(7);
  const auto between = [&](double low, double high) {
    return std::uniform_real_distribution<>(low, high)(random);
  };
  for (int i = 0; i < 20000; ++i) {
    // Every other point within 10 m of a line of nodes or the rim of the inner part.
    double b = between(0.8, 0.844), l = between(0.1, 0.17);
    if (i % 2) b = 0.8 + 0.004 * std::round((b - 0.8) / 0.004) + between(-1.5e-6, 1.5e-6);
    if (i % 4 == 3) l = 0.12 + 0.001 * std::round((l - 0.12) / 0.001) + between(-1.5e-6, 1.5e-6);
    double x = b, y = l, h = 30;
    if (!grid->Forward(x, y, h)) continue;
    const double target[] = {x, y, h};
    // Beside the rim two points may share a target: what comes back is one of them.
    ASSERT_TRUE(grid->Inverse(x, y, h)) << i << ": " << b << ' ' << l;
    double again[] = {x, y, h};
    ASSERT_TRUE(grid->Forward(again[0], again[1], again[2]));
    ASSERT_NEAR(again[0], target[0], kRoundTripRadians);
    ASSERT_NEAR(again[1], target[1], kRoundTripRadians);
    ASSERT_NEAR(again[2], target[2], kRoundTripMetres);
    if (std::abs(x - b) > kRoundTripRadians || std::abs(y - l) > kRoundTripRadians) {
      const bool onRim = b > 0.8119 && b < 0.8201 && l > 0.1199 && l < 0.1301;
      EXPECT_TRUE(onRim) << b << ' ' << l;
    }
  }
}

// The outermost points are shifted out of the grid and come back from there; what no point reaches
// is refused.
TEST(ShiftGrid, InverseReachesTargetsOutside) {
  ShiftGridDefinition definition;
  definition.horizontalUnit = kSecond;
  definition.parts.push_back(
      Part(0, 0.8, 0.1, 0.01, 0.01, 3, 3, 2, [](int, int, int k) { return k == 0 ? 5.0 : -7.0; }));
  const auto grid = ShiftGrid::Make(definition);
  ASSERT_TRUE(grid);
  double b = 0.82, l = 0.1, h = 0;
  ASSERT_TRUE(grid->Forward(b, l, h));
  EXPECT_NEAR(b, 0.82 + 5 * kSecond, 5 * kSecond * kHeldPart);
  ASSERT_TRUE(grid->Inverse(b, l, h));
  EXPECT_NEAR(b, 0.82, kRoundTripRadians);
  EXPECT_NEAR(l, 0.1, kRoundTripRadians);
  b = 0.8 + 4.9 * kSecond;
  l = 0.11;
  EXPECT_EQ(grid->Inverse(b, l, h).status, ShiftStatus::outside);
  b = 0.82 + 5.1 * kSecond;
  EXPECT_EQ(grid->Inverse(b, l, h).status, ShiftStatus::outside);
}

// The inner part shifts one second more to the north: the strip of a second that no point reaches
// lies along its southern edge, one that two points reach along its northern edge.
TEST(ShiftGrid, RefusesWhatNoPointIsShiftedTo) {
  ShiftGridDefinition definition;
  definition.horizontalUnit = kSecond;
  definition.parts.push_back(
      Part(0, 0.8, 0.1, 0.01, 0.01, 4, 4, 2, [](int, int, int k) { return k == 0 ? 2.0 : 0.0; }));
  definition.parts.push_back(Part(1, 0.81, 0.11, 0.005, 0.005, 3, 3, 2,
                                  [](int, int, int k) { return k == 0 ? 3.0 : 0.0; }));
  const auto grid = ShiftGrid::Make(definition);
  ASSERT_TRUE(grid);
  double b = 0.81 + 2.5 * kSecond, l = 0.115, h = 0;
  EXPECT_EQ(grid->Inverse(b, l, h).status, ShiftStatus::notInvertible);
  b = 0.82 + 2.5 * kSecond;
  ASSERT_TRUE(grid->Inverse(b, l, h));
  ASSERT_TRUE(grid->Forward(b, l, h));
  EXPECT_NEAR(b, 0.82 + 2.5 * kSecond, kRoundTripRadians);
}

TEST(ShiftGrid, TakesLongitudesOfAnyTurn) {
  ShiftGridDefinition definition;
  definition.horizontalUnit = kSecond;
  // Across the half turn, stated beyond it; and beside it, stated before it.
  definition.parts.push_back(
      Part(0, 0.5, 3.0, 0.05, 0.05, 3, 9, 2, [](int, int j, int k) { return k ? 0 : 1.0 * j; }));
  definition.parts.push_back(Part(0, 0.5, 3.4 - kTwoPi, 0.05, 0.05, 3, 3, 2,
                                  [](int, int, int k) { return k ? 0 : 100.0; }));
  const auto grid = ShiftGrid::Make(definition);
  ASSERT_TRUE(grid);
  const struct {
    double lon, seconds;
  } rows[] = {{3.125, 2.5}, {3.125 - kTwoPi, 2.5}, {3.325, 6.5},        {3.325 - kTwoPi, 6.5},
              {3.45, 100},  {3.45 - kTwoPi, 100},  {3.45 + kTwoPi, 100}};
  for (const auto& row : rows) {
    double b = 0.55, l = row.lon, h = 0;
    ASSERT_TRUE(grid->Forward(b, l, h)) << row.lon;
    EXPECT_NEAR((b - 0.55) / kSecond, row.seconds, row.seconds * kHeldPart) << row.lon;
    EXPECT_EQ(l, row.lon);  // keeps its turn
    ASSERT_TRUE(grid->Inverse(b, l, h));
    EXPECT_NEAR(b, 0.55, kRoundTripRadians);
  }
  double b = 0.55, l = 3.51, h = 0;
  EXPECT_FALSE(grid->Forward(b, l, h));
  l = 2.99;
  EXPECT_FALSE(grid->Forward(b, l, h));
}

// A grid around the earth, its last column one step before its first.
TEST(ShiftGrid, ClosesTheTurn) {
  ShiftGridDefinition definition;
  definition.components = ShiftComponents::vertical;
  definition.parts.push_back(Part(0, -kHalfPi, -kPi, kPi / 4, kPi / 4, 5, 8, 1,
                                  [](int, int j, int) { return j == 7 ? 10.0 : 1.0 * j; }));
  const auto grid = ShiftGrid::Make(definition);
  ASSERT_TRUE(grid);
  double b = 0.3, l = kPi - kPi / 8, h = 100;
  ASSERT_TRUE(grid->Forward(b, l, h));
  EXPECT_NEAR(h, 105, 1e-12);  // between 10 and 0
  ASSERT_TRUE(grid->Inverse(b, l, h));
  EXPECT_NEAR(h, 100, 1e-12);
}

// Newton's polynomial through three nodes of a parabola is that parabola; the window of a cubic is
// known by its error, x (x − 1) (x − 2) from the window's first node.
TEST(ShiftGrid, InterpolatesBiquadratically) {
  ShiftGridDefinition definition;
  definition.interpolation = ShiftInterpolation::biquadratic;
  definition.components = ShiftComponents::horizontal;
  definition.horizontalUnit = kSecond;
  definition.parts.push_back(Part(0, 0.5, 0.5, 0.01, 0.01, 6, 6, 2, [](int i, int j, int k) {
    return k == 0 ? 0.25 * i * i - i * j + 0.5 * j * j : 0.125 * i * i * i;
  }));
  const auto grid = ShiftGrid::Make(definition);
  ASSERT_TRUE(grid);
  constexpr double kHeld = 16 * 4 * kHeldPart;  // arc-seconds; the windows sum up to 4 nodes of 16
  const struct {
    double row;
    int window;
  } rows[] = {{0.25, 0}, {0.75, 0}, {1.45, 0}, {1.75, 1},
              {2.45, 1}, {2.75, 2}, {4.25, 3}, {4.9, 3}};
  for (const auto& [row, window] : rows) {
    const double column = 2.75;
    double b = 0.5 + 0.01 * row, l = 0.5 + 0.01 * column, h = 0;
    const double b0 = b, l0 = l;
    ASSERT_TRUE(grid->Forward(b, l, h));
    const double u = row - window;
    EXPECT_NEAR((b - b0) / kSecond, 0.25 * row * row - row * column + 0.5 * column * column, kHeld);
    EXPECT_NEAR((l - l0) / kSecond, 0.125 * (row * row * row - u * (u - 1) * (u - 2)), kHeld)
        << row;
    // Kept: the inverse takes the shift at the target and does not iterate.
    const double shiftB = b - b0, shiftL = l - l0;
    double backB = b0, backL = l0;
    ASSERT_TRUE(grid->Inverse(backB, backL, h));
    EXPECT_EQ(backB, b0 - shiftB) << row;
    EXPECT_NEAR(backL, l0 - shiftL, 1e-16);
  }
}

// A lattice in a plane with a constant offset; position and offset as in the grids of Czechia
// (metres, both coordinates negative).
TEST(ShiftGrid, ShiftsInAPlane) {
  ShiftGridDefinition definition;
  definition.space = ShiftSpace::plane;
  definition.horizontalUnit = 0.001;
  definition.northOffset = definition.eastOffset = -5000000;
  definition.parts.push_back(Part(0, -1250000, -900000, 2000, 2000, 40, 50, 2,
                                  [](int i, int j, int k) { return k == 0 ? 2.0 * i : -3.0 * j; }));
  const auto grid = ShiftGrid::Make(definition);
  ASSERT_TRUE(grid);
  double n = -1250000 + 7000, e = -900000 + 11000, h = 300;
  ASSERT_TRUE(grid->Forward(n, e, h));
  EXPECT_NEAR(n, -6243000 + 0.007, 2e-9);
  EXPECT_NEAR(e, -5889000 - 0.0165, 2e-9);
  ASSERT_TRUE(grid->Inverse(n, e, h));
  EXPECT_NEAR(n, -1243000, kRoundTripMetres);
  EXPECT_NEAR(e, -889000, kRoundTripMetres);
  EXPECT_EQ(h, 300);
}

TEST(ShiftGrid, RefusesHolesAndWhatIsNotFinite) {
  ShiftGridDefinition definition;
  definition.components = ShiftComponents::horizontalAndVertical;
  definition.parts.push_back(Part(0, 0.5, 0.5, 0.1, 0.1, 4, 4, 3, [](int i, int j, int k) {
    return i == 0 && j == 0 && k == 2 ? kNaN : 0.0;
  }));
  const auto grid = ShiftGrid::Make(definition);
  ASSERT_TRUE(grid);
  double b[] = {0.55, 0.65, kNaN, 0.65, 0.2}, l[] = {0.55, 0.65, 0.65, INFINITY, 0.6};
  double h[] = {1, 1, 1, 1, 1};
  ShiftStatus status[5];
  for (const bool forward : {true, false}) {
    double x[5], y[5], z[5];
    std::copy_n(b, 5, x);
    std::copy_n(l, 5, y);
    std::copy_n(h, 5, z);
    EXPECT_EQ(forward ? grid->ForwardBatch(x, y, z, 5, 1, status)
                      : grid->InverseBatch(x, y, z, 5, 1, status),
              1U);
    EXPECT_EQ(status[0], ShiftStatus::hole);
    EXPECT_EQ(status[1], ShiftStatus::converted);
    EXPECT_EQ(status[2], ShiftStatus::input);
    EXPECT_EQ(status[3], ShiftStatus::input);
    EXPECT_EQ(status[4], ShiftStatus::outside);
    EXPECT_TRUE(std::isnan(x[0]) && std::isnan(y[0]) && std::isnan(z[0]));
  }
}

TEST(ShiftGrid, GivesTheSameBitsEverywhere) {
  const auto grid = RoughNested();
  ASSERT_TRUE(grid);
  constexpr std::size_t kPoints = 700;
  std::vector<double> given;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double t = static_cast<double>(i);
    given.insert(given.end(), {0.799 + std::fmod(t * 0.618e-3, 0.047),
                               0.099 + std::fmod(t * 0.755e-3, 0.073), t});
  }
  const auto best = simd::ActiveInstructionSet();
  using enum simd::InstructionSet;
  for (const auto convert : {&CoordinateShift::ForwardBatch, &CoordinateShift::InverseBatch}) {
    std::vector<double> expected;
    for (const auto set : {baseline, avx2, avx512}) {
      simd::ForceInstructionSet(set);
      std::vector<double> all = given;
      std::vector<ShiftStatus> status(kPoints);
      ((*grid).*convert)(all.data(), all.data() + 1, all.data() + 2, kPoints, 3, status.data());
      for (std::size_t i = 0; i < kPoints; ++i) {
        double p[] = {given[3 * i], given[3 * i + 1], given[3 * i + 2]};
        const bool forward = convert == &CoordinateShift::ForwardBatch;
        const ShiftResult one =
            forward ? grid->Forward(p[0], p[1], p[2]) : grid->Inverse(p[0], p[1], p[2]);
        ASSERT_EQ(one.status, status[i]);
        for (std::size_t k = 0; k < 3; ++k) {
          if (one) {
            ASSERT_EQ(p[k], all[3 * i + k]) << i;
          } else {
            ASSERT_TRUE(std::isnan(all[3 * i + k]));
          }
          if (one && set != baseline) {
            ASSERT_EQ(all[3 * i + k], expected[3 * i + k]) << i;
          }
        }
      }
      expected = all;
    }
  }
  simd::ForceInstructionSet(best);
}

TEST(ShiftGrid, RefusesDefinitionsThatAreNotSound) {
  const auto zero = [](int, int, int) { return 0.0; };
  const auto sound = [&] {
    ShiftGridDefinition definition;
    definition.parts.push_back(Part(0, 0.5, 0.5, 0.1, 0.1, 4, 4, 2, zero));
    return definition;
  };
  ASSERT_TRUE(ShiftGrid::Make(sound()));
  void (*const spoils[])(ShiftGridDefinition&) = {
      [](auto& d) { d.parts.clear(); },
      [](auto& d) { d.parts.resize(ShiftGrid::kMaxParts + 1, d.parts[0]); },
      [](auto& d) { d.space = ShiftSpace::geocentric; },
      [](auto& d) { d.horizontalUnit = kNaN; },
      [](auto& d) { d.northOffset = INFINITY; },
      [](auto& d) { d.parts[0].south = kNaN; },
      [](auto& d) { d.parts[0].eastStep = 0; },
      [](auto& d) { d.parts[0].eastStep = 1e-320; },  // whose reciprocal is infinite
      [](auto& d) { d.parts[0].northStep = 0.5; },    // beyond the pole
      [](auto& d) { d.parts[0].eastStep = 3; },       // more than a turn
      [](auto& d) { d.space = ShiftSpace::plane, d.parts[0].south = 1e300; },
      [](auto& d) { d.space = ShiftSpace::plane, d.parts[0].west = 1e12; },  // every node the same
      [](auto& d) { d.parts[0].rows = 5; },
      [](auto& d) { d.parts[0].rows = d.parts[0].columns = -4; },
      [](auto& d) { d.parts[0].values.pop_back(); },
      [](auto& d) { d.parts[0].accuracies.resize(3); },
      [](auto& d) { d.components = ShiftComponents::horizontalAndVertical; },
      [](auto& d) { d.interpolation = ShiftInterpolation::biquadratic, d.eastOffset = 1; },
      [](auto& d) { d.parts[0].values[3] = INFINITY; },
  };
  for (std::size_t i = 0; i < std::size(spoils); ++i) {
    ShiftGridDefinition definition = sound();
    spoils[i](definition);
    std::string reason;
    EXPECT_FALSE(ShiftGrid::Make(definition, &reason)) << i;
    EXPECT_FALSE(reason.empty()) << i;
  }
}

// DHDN to ETRS89 by the grid of the German survey administrations: figures of PROJ 9.1.1, which agree
// with an evaluation of the file in 40 digits within a unit of the last one printed.
TEST(ShiftGrid, ReproducesWorkedPointsOfGermany) {
  const char* path = "/usr/share/proj/BETA2007.gsb";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << path << " is absent";
  const auto grid = ReadNtv2File(path);
  ASSERT_TRUE(grid);
  constexpr double kLastDigit = 1e-10;  // degrees, 0.01 mm
  const struct {
    double lon, lat, toLon, toLat, fromLon, fromLat;
  } rows[] = {
      {13.4, 52.5, 13.3982568056, 52.4985944130, 13.4017435097, 52.5014057399},
      {7.5, 50.25, 7.4991658958, 50.2488184945, 7.5008342423, 50.2511816293},
      {10.123456789, 48.987654321, 10.1222676506, 48.9866289439, 10.1246461172, 48.9886798037},
  };
  for (const auto& row : rows) {
    double b = row.lat * kRadPerDeg, l = row.lon * kRadPerDeg, h = 0;
    ASSERT_TRUE(grid->Forward(b, l, h));
    EXPECT_NEAR(b * kDegPerRad, row.toLat, kLastDigit);
    EXPECT_NEAR(l * kDegPerRad, row.toLon, kLastDigit);
    b = row.lat * kRadPerDeg;
    l = row.lon * kRadPerDeg;
    ASSERT_TRUE(grid->Inverse(b, l, h));
    EXPECT_NEAR(b * kDegPerRad, row.fromLat, kLastDigit);
    EXPECT_NEAR(l * kDegPerRad, row.fromLon, kLastDigit);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
