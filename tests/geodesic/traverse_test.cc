#include "geomath/geodesic/traverse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/proj/methods/utm_proj.h"

namespace {

using namespace zel_cs::geomath;

constexpr double kA = 6378137, kGrs80 = 298.257222101;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kMetres = 1e-4;
const GridPoint kStart{5796489.777, 273741.297, 300};

TUTMProj Grid() { return {kA, kGrs80, 147 * kRadPerDeg, 0.9996, 0, 500000, 1e7}; }

// What would be measured between given stations, by the reduction of lines.
TraverseField Observed(const GridLines& lines, const std::vector<GridPoint>& stations,
                       TraverseDistance kind) {
  TraverseField field{.start = stations[0], .kind = kind};
  field.startAzimuth = 1;
  double back = field.startAzimuth;
  for (std::size_t i = 0; i + 1 < stations.size(); ++i) {
    GridLine line;
    EXPECT_TRUE(lines.Between(stations[i], stations[i + 1], line));
    const double distance = kind == TraverseDistance::slope      ? line.slopeDistance
                            : kind == TraverseDistance::ground   ? line.groundDistance
                            : kind == TraverseDistance::geodesic ? line.geodesicDistance
                                                                 : line.gridDistance;
    field.legs.push_back({line.azimuth - back, distance, stations[i + 1].h});
    back = line.backAzimuth;
  }
  field.end = stations.back();
  field.endAngle = 0.7;
  field.endAzimuth = back + 0.7;
  return field;
}

std::vector<GridPoint> Stations(std::size_t count, double spacing) {
  std::mt19937_64 random(1808);
  std::uniform_real_distribution<double> unit(-1, 1);
  std::vector<GridPoint> stations{kStart};
  for (std::size_t i = 0; i < count; ++i) {
    const GridPoint& last = stations.back();
    stations.push_back({last.n + spacing * (0.3 + unit(random)),
                        last.e + spacing * (1 + unit(random)), 300 + spacing / 10 * unit(random)});
  }
  return stations;
}

TEST(Traverse, ComesBackToItsStationsFromEveryKindOfDistance) {
  const TUTMProj grid = Grid();
  const GridLines lines(grid);
  for (const double spacing : {50.0, 1500.0})
    for (const auto kind : {TraverseDistance::slope, TraverseDistance::ground,
                            TraverseDistance::geodesic, TraverseDistance::grid}) {
      std::vector<GridPoint> stations = Stations(50, spacing);
      for (std::size_t i = 50; i-- > 0;) stations.push_back(stations[i]);  // and back
      const TraverseField field = Observed(lines, stations, kind);
      TraverseResult result;
      ASSERT_TRUE(Traverse(lines).Compute(field, TraverseAdjustment::none, result));
      ASSERT_EQ(result.stations.size(), stations.size());
      for (std::size_t i = 0; i < stations.size(); ++i) {
        EXPECT_NEAR(result.stations[i].n, stations[i].n, kMetres);
        EXPECT_NEAR(result.stations[i].e, stations[i].e, kMetres);
        EXPECT_EQ(result.stations[i].h, stations[i].h);
      }
      EXPECT_NEAR(result.misclosureN, 0, kMetres);
      EXPECT_NEAR(result.misclosureAngle, 0, 1e-9);
      EXPECT_LT(result.relativeMisclosure, 1e-8);
    }
}

// A traverse of one kind of error, whose adjustment has a closed form: a straight one of three equal
// legs that run east. A surplus along it goes to the distances by their variances, one across it to
// the angles by their levers; with the compass rule both go by the length.
TEST(Traverse, AdjustsAStraightTraverseInClosedForm) {
  const TTMProj grid(kA, kGrs80, 147 * kRadPerDeg, 1, 0, 500000, 1e7);
  const GridLines lines(grid);
  constexpr double kLeg = 400, kAlong = 0.030, kAcross = 0.020;
  std::vector<GridPoint> stations;
  for (int i = 0; i < 4; ++i) stations.push_back({5.8e6, 499400 + kLeg * i, 0});
  TraverseField field = Observed(lines, stations, TraverseDistance::grid);
  field.endAzimuth.reset();
  field.end->e += kAlong;
  field.end->n += kAcross;
  field.sigmaAngle = 1e-5;
  field.sigmaDistance = 0.002;
  field.sigmaPerMetre = 0;
  constexpr double kSecondOrder = 2e-6;  // metres, squares of the misclosures over the legs

  TraverseResult result;
  ASSERT_TRUE(Traverse(lines).Compute(field, TraverseAdjustment::leastSquares, result));
  EXPECT_NEAR(result.misclosureE, -kAlong, kMetres);
  EXPECT_NEAR(result.misclosureN, -kAcross, kMetres);
  EXPECT_NEAR(result.stations[3].n, field.end->n, 1e-7);
  EXPECT_NEAR(result.stations[3].e, field.end->e, 1e-7);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(result.distanceCorrections[i], kAlong / 3, kSecondOrder);
    const double lever = (3 - static_cast<double>(i)) * kLeg, squares = (9 + 4 + 1) * kLeg * kLeg;
    EXPECT_NEAR(result.angleCorrections[i] * kLeg, -kAcross * lever / squares * kLeg, kSecondOrder);
  }
  const double v2 = kAlong * kAlong / 3 / (0.002 * 0.002) +
                    kAcross * kAcross / (14 * kLeg * kLeg) / (1e-5 * 1e-5);
  EXPECT_NEAR(result.sigma0, std::sqrt(v2 / 2), 1e-3);

  ASSERT_TRUE(Traverse(lines).Compute(field, TraverseAdjustment::bowditch, result));
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(result.stations[i].e, stations[i].e + kAlong * i / 3, kSecondOrder);
    EXPECT_NEAR(result.stations[i].n, stations[i].n + kAcross * i / 3, kSecondOrder);
  }
  EXPECT_TRUE(std::isnan(result.sigma0));
  EXPECT_TRUE(std::isnan(result.misclosureAngle));
}

// With closing angle and noise in all observations: both adjustments end at the known end, least
// squares with corrections that fulfil every condition and are smaller than any others that do.
TEST(Traverse, AdjustedObservationsCloseOnEndAndAzimuth) {
  const TUTMProj grid = Grid();
  const GridLines lines(grid);
  TraverseField field = Observed(lines, Stations(12, 800), TraverseDistance::slope);
  std::mt19937_64 random(8);
  std::normal_distribution<double> normal;
  std::vector<double> errors;
  for (TraverseLeg& leg : field.legs) {
    errors.push_back(normal(random));
    leg.angle += errors.back() * field.sigmaAngle;
    errors.push_back(normal(random));
    leg.distance += errors.back() * (field.sigmaDistance + field.sigmaPerMetre * leg.distance);
  }
  errors.push_back(normal(random));
  *field.endAngle += errors.back() * field.sigmaAngle;

  TraverseResult result, again;
  const Traverse traverse(lines);
  ASSERT_TRUE(traverse.Compute(field, TraverseAdjustment::bowditch, result));
  EXPECT_NEAR(result.stations.back().n, field.end->n, 1e-7);
  EXPECT_NEAR(result.angleCorrections[0] * 13, -result.misclosureAngle, 1e-12);

  ASSERT_TRUE(traverse.Compute(field, TraverseAdjustment::leastSquares, result));
  double introduced = 0;
  for (const double e : errors) introduced += e * e;
  EXPECT_LT(3 * result.sigma0 * result.sigma0, introduced);  // the errors fulfil the conditions too
  TraverseField adjusted = field;
  for (std::size_t i = 0; i < field.legs.size(); ++i) {
    adjusted.legs[i].angle += result.angleCorrections[i];
    adjusted.legs[i].distance += result.distanceCorrections[i];
  }
  *adjusted.endAngle += result.angleCorrections.back();
  ASSERT_TRUE(traverse.Compute(adjusted, TraverseAdjustment::none, again));
  EXPECT_NEAR(again.misclosureN, 0, 1e-7);
  EXPECT_NEAR(again.misclosureE, 0, 1e-7);
  EXPECT_NEAR(again.misclosureAngle, 0, 1e-12);
}

TEST(Traverse, RefusesWhatCannotBe) {
  const TUTMProj grid = Grid();
  const GridLines lines(grid);
  const Traverse traverse(lines);
  TraverseResult result;
  TraverseField field{.start = kStart, .legs = {{1, 100, 300}}};
  EXPECT_TRUE(traverse.Compute(field, TraverseAdjustment::none, result));
  EXPECT_TRUE(std::isnan(result.misclosureN));
  EXPECT_FALSE(traverse.Compute(field, TraverseAdjustment::bowditch, result));
  for (const double distance : {0.0, -5.0, kNan, std::numeric_limits<double>::infinity()}) {
    field.legs[0].distance = distance;
    EXPECT_FALSE(traverse.Compute(field, TraverseAdjustment::none, result)) << distance;
  }
  field.legs[0] = {1, 100, 500};  // 200 m up
  field.kind = TraverseDistance::slope;
  EXPECT_FALSE(traverse.Compute(field, TraverseAdjustment::none, result));
  field.legs.clear();
  field.end = kStart;
  EXPECT_FALSE(traverse.Compute(field, TraverseAdjustment::leastSquares, result));
}

class SteepGeoid : public GeoidHeight {
 public:
  bool Height(double b, double l, double& height) const override {
    height = 20 + 400 * b - 250 * l;  // 13 and 8 seconds
    return true;
  }
};

// Angles as a theodolite turns them, about the plumb line, on steep sights: what the corrections of
// the two sights at a station leave out of the true ones.
TEST(Traverse, ReducesAnglesTurnedAboutThePlumbLine) {
  const TUTMProj grid = Grid();
  const SteepGeoid geoid;
  const GridLines lines(grid, &geoid);
  std::vector<GridPoint> stations = Stations(12, 800);
  for (std::size_t i = 0; i < stations.size(); ++i) stations[i].h = i % 2 == 0 ? 300 : 500;
  TraverseField field = Observed(lines, stations, TraverseDistance::ground);
  double worst = 0;
  for (std::size_t i = 0; i + 1 < stations.size(); ++i) {
    PlumbLine forth, behind;
    ASSERT_TRUE(lines.PlumbAt(stations[i], stations[i + 1], forth));
    field.legs[i].angle -= forth.directionCorrection;
    if (i == 0) continue;
    ASSERT_TRUE(lines.PlumbAt(stations[i], stations[i - 1], behind));
    field.legs[i].angle += behind.directionCorrection;
    worst = std::max(worst, std::abs(forth.directionCorrection - behind.directionCorrection));
  }
  PlumbLine last;
  ASSERT_TRUE(lines.PlumbAt(stations[12], stations[11], last));
  *field.endAngle += last.directionCorrection;
  EXPECT_GT(worst, 1 * kRadPerArcSecond);
  TraverseResult result;
  field.deflections = true;
  ASSERT_TRUE(Traverse(lines).Compute(field, TraverseAdjustment::none, result));
  EXPECT_NEAR(result.misclosureN, 0, kMetres);
  EXPECT_NEAR(result.misclosureE, 0, kMetres);
  EXPECT_NEAR(result.misclosureAngle, 0, 1e-9);
  EXPECT_FALSE(Traverse(GridLines(grid)).Compute(field, TraverseAdjustment::none, result));
}

}  // namespace
