#include "geomath/design/zone_design.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "geomath/proj/methods/utm_proj.h"
#include "tests/design/terrain.h"

namespace zel_cs::geomath {
namespace {

const Ellipsoid kGrs80 = MakeEllipsoid(6378137, 298.257222101);

constexpr double kAxisDegrees = 0.01;   // what an axis is to be found within
constexpr double kScale = 1e-7;         // and a scale
constexpr double kScaleOfRange = 2e-5;  // a range is proportional to the scale, whatever the axis
constexpr double kFitted = 1e-9;        // δ that heights leave that were made to fit a zone

constexpr double kHole = std::numeric_limits<double>::quiet_NaN();

constexpr ZoneFamily kFamilies[] = {ZoneFamily::transverseMercator, ZoneFamily::lambert,
                                    ZoneFamily::obliqueMercator, ZoneFamily::stereographic};
constexpr DesignMeasure kMeasures[] = {DesignMeasure::square, DesignMeasure::largest,
                                       DesignMeasure::percentile, DesignMeasure::range};

FamilyDesign Design(const Terrain& terrain, ZoneFamily family, DesignMeasure measure) {
  DesignOptions options;
  options.ellipsoid = kGrs80;
  options.criterion.measure = measure;
  options.families = {family};
  const ZoneDesign design = DesignZone(terrain.Points(), options);
  EXPECT_EQ(design.status, DesignStatus::done);
  return design.families.empty() ? FamilyDesign{} : design.families[0];
}

double ValueOf(DesignMeasure measure, const DistortionFigures& figures) {
  switch (measure) {
    case DesignMeasure::largest:
      return figures.Largest();
    case DesignMeasure::percentile:
      return figures.Percentile(0.95);
    case DesignMeasure::range:
      return figures.Range();
    default:
      return figures.RootMeanSquare();
  }
}

// Terrain on which a zone has no distortion anywhere: h = R·(k − 1).
Terrain TerrainOf(const ZoneDefinition& zone, double latDeg, double lonDeg, double halfNorth,
                  double halfEast, int steps) {
  Terrain terrain = LatticeAbout(latDeg, lonDeg, halfNorth, halfEast, steps, kGrs80,
                                 [](double, double) { return 0.0; });
  const std::vector<double> k = terrain.Distortions(zone, kGrs80);
  for (std::size_t i = 0; i < k.size(); ++i)
    terrain.h[i] = kGrs80.GetGaussianRadius(terrain.b[i]) * k[i];
  return terrain;
}

// How far the scales of two zones differ on a terrain.
double ScaleDifference(const Terrain& terrain, const ZoneDefinition& one,
                       const ZoneDefinition& other) {
  const auto d1 = terrain.Distortions(one, kGrs80), d2 = terrain.Distortions(other, kGrs80);
  double largest = 0;
  for (std::size_t i = 0; i < d1.size(); ++i) largest = std::max(largest, std::abs(d1[i] - d2[i]));
  return largest;
}

TEST(ZoneDesignTest, ZoneIsFoundAgainOnHeightsMadeToFitIt) {
  for (const double lat : {0.0, 20.0, 45.0, 70.0, -33.0})
    for (const ZoneFamily family : kFamilies)
      for (const DesignMeasure measure : kMeasures) {
        SCOPED_TRACE(testing::Message() << lat << " family " << static_cast<int>(family)
                                        << " measure " << static_cast<int>(measure));
        // Off the middle, and the Lambert parallel off the equator.
        ZoneDefinition zone{.family = family,
                            .lat0 = (lat + 0.2) * kRadPerDeg,
                            .lon0 = 15.3 * kRadPerDeg,
                            .scale = 1.00012};
        if (family == ZoneFamily::obliqueMercator) zone.azimuth = 35 * kRadPerDeg;
        const Terrain terrain = TerrainOf(zone, lat, 15, 60e3, 40e3, 12);
        const FamilyDesign found = Design(terrain, family, measure);
        EXPECT_NEAR(found.exact.scale, zone.scale, kScale);
        EXPECT_LT(found.value, measure == DesignMeasure::square ? kFitted : 10 * kFitted);
        EXPECT_LT(ScaleDifference(terrain, found.exact, zone), 20 * kFitted);
        const double dLat = (found.exact.lat0 - zone.lat0) * kDegPerRad;
        const double dLon = (found.exact.lon0 - zone.lon0) * kDegPerRad;
        switch (family) {
          case ZoneFamily::transverseMercator:
            EXPECT_LT(std::abs(dLon), kAxisDegrees);
            break;
          case ZoneFamily::lambert:
            EXPECT_LT(std::abs(dLat), kAxisDegrees);
            break;
          case ZoneFamily::obliqueMercator:
            // Where the line has its centre now, its meridian converges with that of the zone's.
            EXPECT_NEAR(found.exact.azimuth * kDegPerRad, 35 + dLon * std::sin(zone.lat0),
                        kAxisDegrees);
            break;
          case ZoneFamily::stereographic:
            EXPECT_LT(std::hypot(dLat, dLon), kAxisDegrees);
            break;
        }
      }
}

// δ = x²/2R² + (k0 − 1) − (h0 + q·x)/R is least without its linear term: on a plane that rises by q an
// axis moves by R·q to the low side, and a point, whose scale grows half as fast, by 2·R·q. On a square
// of half side w, with t = (k0 − 1) − h0/R about the moved axis: least squares make the mean of δ 0, the
// extremes its largest and smallest value opposite.
TEST(ZoneDesignTest, AxisMovesToTheLowSideOfAPlane) {
  constexpr double kHalf = 20e3, kHeight = 600;
  constexpr int kSteps = 20;
  double meanSquare = 0;  // of one coordinate over the lattice
  for (int i = -kSteps; i <= kSteps; ++i)
    meanSquare += std::pow(kHalf * i / kSteps, 2) / (2 * kSteps + 1);
  for (const double lat : {0.0, 30.0, 52.0, 70.0})
    for (const double q : {0.0, 1e-3, -2e-3})
      for (const ZoneFamily family : kFamilies)
        for (const DesignMeasure measure : {DesignMeasure::square, DesignMeasure::largest}) {
          SCOPED_TRACE(testing::Message()
                       << lat << " q " << q << " family " << static_cast<int>(family) << " measure "
                       << static_cast<int>(measure));
          if (family == ZoneFamily::obliqueMercator) continue;  // below
          // Up to the north-east for both of them, along the gradient's own axis for the others.
          const double slantwise = std::sqrt(0.5);
          const bool both =
              family == ZoneFamily::obliqueMercator || family == ZoneFamily::stereographic;
          const double upNorth = both ? slantwise : family == ZoneFamily::lambert;
          const double upEast = both ? slantwise : family == ZoneFamily::transverseMercator;
          const Terrain terrain =
              LatticeAbout(lat, -100, kHalf, kHalf, kSteps, kGrs80, [&](double north, double east) {
                return kHeight + q * (north * upNorth + east * upEast);
              });
          const FamilyDesign found = Design(terrain, family, measure);
          const double R = kGrs80.GetGaussianRadius(terrain.b0);
          const double factor = family == ZoneFamily::stereographic ? 2 : 1;
          const double away = -factor * R * q;
          const double north = (found.exact.lat0 - terrain.b0) * R;
          const double east = (found.exact.lon0 - terrain.l0) * R * std::cos(terrain.b0);
          const double kMetres = kAxisDegrees * kRadPerDeg * R;
          if (family != ZoneFamily::transverseMercator) {
            EXPECT_NEAR(north, away * upNorth, kMetres);
          }
          if (family != ZoneFamily::lambert) {
            EXPECT_NEAR(east, away * upEast, kMetres * std::cos(terrain.b0));
          }
          // About the moved axis the heights are those of the middle less q·away.
          const double w2 = kHalf * kHalf, offset2 = away * away;
          const double bend = family == ZoneFamily::stereographic ? 4 * R * R : 2 * R * R;
          const double sides = family == ZoneFamily::stereographic ? 2 : 1;
          const double expected =
              1 + kHeight / R -
              ((measure == DesignMeasure::square ? sides * meanSquare : sides * w2 / 2) + offset2) /
                  bend;
          EXPECT_NEAR(found.exact.scale, expected, kScale);
        }
}

// On a disc no direction is better than another but for the slope: the line runs across it.
TEST(ZoneDesignTest, ObliqueLineRunsAcrossTheSlope) {
  constexpr double kHalf = 20e3, kHeight = 600, kUpBearing = 30 * kRadPerDeg;
  constexpr double kDirection = 0.15;  // degrees: at 70° a plane of these metres is bent
  for (const double lat : {0.0, 30.0, 52.0, 70.0})
    for (const double q : {1.5e-3, -2e-3})
      for (const DesignMeasure measure : {DesignMeasure::square, DesignMeasure::largest}) {
        SCOPED_TRACE(testing::Message()
                     << lat << " q " << q << " measure " << static_cast<int>(measure));
        const Terrain terrain =
            DiscAbout(lat, -100, kHalf, 30, kGrs80, [&](double north, double east) {
              return kHeight + q * (north * std::cos(kUpBearing) + east * std::sin(kUpBearing));
            });
        const FamilyDesign found = Design(terrain, ZoneFamily::obliqueMercator, measure);
        const double R = kGrs80.GetGaussianRadius(terrain.b0);
        const double north = (found.exact.lat0 - terrain.b0) * R;
        const double east = (found.exact.lon0 - terrain.l0) * R * std::cos(terrain.b0);
        const double up = north * std::cos(kUpBearing) + east * std::sin(kUpBearing);
        EXPECT_NEAR(up, -R * q, kAxisDegrees * kRadPerDeg * R);
        // Its azimuth at its own meridian, which converges with that of the middle.
        const double turn = east / R * std::tan(terrain.b0);
        const double azimuth = kUpBearing - kHalfPi + turn;
        EXPECT_NEAR(std::remainder(found.exact.azimuth - azimuth, kPi) * kDegPerRad, 0, kDirection);
        double meanSquare = 0, largest = 0;
        for (std::size_t i = 0; i < terrain.b.size(); ++i) {
          const double d = (terrain.h[i] - kHeight) / q;
          meanSquare += d * d / static_cast<double>(terrain.b.size());
          largest = std::max(largest, d * d);
        }
        const double bend =
            (measure == DesignMeasure::square ? meanSquare : largest / 2) + R * q * R * q;
        EXPECT_NEAR(found.exact.scale, 1 + kHeight / R - bend / (2 * R * R), kScale);
      }
}

// A ridge along the axis and noise, both the same on either side, do not move it.
TEST(ZoneDesignTest, SymmetricTerrainKeepsTheAxisInTheMiddle) {
  for (const DesignMeasure measure : kMeasures)
    for (const double lat : {0.0, 45.0, 70.0}) {
      Noise noise;
      Terrain terrain = LatticeAbout(lat, 24, 30e3, 50e3, 30, kGrs80, [](double, double east) {
        return 300 + 400 * std::exp(-std::pow(east / 10e3, 2));
      });
      constexpr std::size_t kRow = 61;
      for (std::size_t i = 0; i < terrain.h.size(); i += kRow)
        for (std::size_t j = 0; j <= kRow / 2; ++j) {
          const double bump = 30 * noise.Next();
          terrain.h[i + j] += bump;
          if (2 * j + 1 < kRow) terrain.h[i + kRow - 1 - j] += bump;
        }
      const FamilyDesign found = Design(terrain, ZoneFamily::transverseMercator, measure);
      EXPECT_NEAR(found.exact.lon0 * kDegPerRad, 24, kAxisDegrees) << lat;
    }
}

double Sexagesimal(double packed) {  // DDD.MMSS as the registry prints it
  const double size = std::abs(packed), degrees = std::floor(size + 1e-9);
  const double minutes = std::floor((size - degrees) * 100 + 1e-7);
  const double seconds = ((size - degrees) * 100 - minutes) * 100;
  return std::copysign(degrees + minutes / 60 + seconds / 3600, packed);
}

// Zones as the EPSG registry has them (version 10.076, angles DDD.MMSS).
struct PublishedZone {
  const char* name;
  int code;
  ZoneFamily family;
  double lat0, lon0, azimuth, scale;
  double middleLat, halfNorth, halfEast;  // degrees and metres, of about its area
};
constexpr PublishedZone kPublished[] = {
    {"Oregon Bend-Redmond-Prineville", 6794, ZoneFamily::lambert, 44.40, -121.15, 0, 1.00012, 44.4,
     50e3, 60e3},
    {"Oregon Portland", 6854, ZoneFamily::lambert, 45.30, -122.45, 0, 1.000002, 45.5, 40e3, 60e3},
    {"Oregon Mitchell", 8325, ZoneFamily::lambert, 47.00, -120.15, 0, 0.99927, 44.6, 25e3, 25e3},
    {"Iowa zone 1", 7057, ZoneFamily::lambert, 43.12, -95.15, 0, 1.000052, 43.1, 50e3, 100e3},
    {"Montana Milk River", 7111, ZoneFamily::lambert, 48.30, -111.00, 0, 1.000145, 48.6, 50e3,
     120e3},
    {"Oregon Baker", 6786, ZoneFamily::transverseMercator, 44.30, -117.50, 0, 1.00016, 44.7, 40e3,
     30e3},
    {"Oregon Eugene", 6822, ZoneFamily::transverseMercator, 43.45, -123.10, 0, 1.000015, 44.0, 40e3,
     35e3},
    {"Iowa zone 3", 7059, ZoneFamily::transverseMercator, 40.15, -91.12, 0, 1.000035, 42.3, 90e3,
     35e3},
    {"Montana Crow", 7115, ZoneFamily::transverseMercator, 44.45, -107.45, 0, 1.000148, 45.4, 50e3,
     70e3},
    {"Oregon Coast", 6842, ZoneFamily::obliqueMercator, 44.45, -124.03, 5, 1, 44.3, 230e3, 25e3},
    {"Oregon Columbia River West", 6810, ZoneFamily::obliqueMercator, 45.55, -123.00, -65, 1, 45.9,
     40e3, 70e3},
};

TEST(ZoneDesignTest, PublishedZonesAreFoundAgainAndNeverBeaten) {
  constexpr double kOtherCentre = 1e-7;  // δ: the aposphere of another centre on the same line
  constexpr double kRounding = 1e-6;     // δ that a minute of arc is at most worth in these zones
  for (const PublishedZone& row : kPublished) {
    SCOPED_TRACE(testing::Message() << row.name << ", EPSG:" << row.code);
    const ZoneDefinition published{.family = row.family,
                                   .lat0 = Sexagesimal(row.lat0) * kRadPerDeg,
                                   .lon0 = Sexagesimal(row.lon0) * kRadPerDeg,
                                   .azimuth = row.azimuth * kRadPerDeg,
                                   .scale = row.scale};
    const double middleLon = Sexagesimal(row.lon0) + 0.1;
    const Terrain fitting =
        TerrainOf(published, row.middleLat, middleLon, row.halfNorth, row.halfEast, 12);
    const FamilyDesign found = Design(fitting, row.family, DesignMeasure::square);
    EXPECT_EQ(found.rounded.scale, row.scale);
    EXPECT_LT(ScaleDifference(fitting, found.exact, published),
              row.family == ZoneFamily::obliqueMercator ? kOtherCentre : kFitted);
    EXPECT_LT(found.roundedValue, kRounding);
    constexpr double kSameAngle = 1e-12;  // radians
    if (row.family == ZoneFamily::transverseMercator) {
      EXPECT_NEAR(found.rounded.lon0, published.lon0, kSameAngle);
    }
    if (row.family == ZoneFamily::lambert) {
      EXPECT_NEAR(found.rounded.lat0, published.lat0, kSameAngle);
    }

    // Hills up to some hundred metres about the height that the zone is for.
    Noise noise;
    Terrain hills = fitting;
    for (std::size_t i = 0; i < hills.h.size(); ++i)
      hills.h[i] = 0.9 * hills.h[i] + 200 * std::sin(60 * hills.b[i]) * std::cos(90 * hills.l[i]) +
                   50 * noise.Next();
    const DistortionFigures before(hills.Distortions(published, kGrs80));
    for (const DesignMeasure measure : kMeasures) {
      const FamilyDesign better = Design(hills, row.family, measure);
      const DistortionFigures after(hills.Distortions(better.exact, kGrs80));
      EXPECT_LE(better.value, ValueOf(measure, before) * (1 + kScaleOfRange))
          << static_cast<int>(measure);
      EXPECT_NEAR(ValueOf(measure, after), better.value, kFitted) << static_cast<int>(measure);
    }
  }
}

TEST(ZoneDesignTest, OtherAnswersSayWhy) {
  Terrain terrain =
      LatticeAbout(50, 10, 10e3, 10e3, 3, kGrs80, [](double, double) { return 100.0; });
  const auto status = [](const Terrain& t, DesignOptions options = {}) {
    return DesignZone(t.Points(), options).status;
  };
  const auto at = [](double lat, double lon, double half) {
    return LatticeAbout(lat, lon, half, half, 2, kGrs80, [](double, double) { return 0.0; });
  };
  EXPECT_EQ(status(terrain), DesignStatus::done);
  EXPECT_EQ(status({}), DesignStatus::noPoints);
  EXPECT_EQ(status(at(89.5, 0, 10e3)), DesignStatus::atPole);
  EXPECT_EQ(status(at(10, 0, 1500e3)), DesignStatus::tooLarge);
  EXPECT_EQ(status(at(10, 0, 0)), DesignStatus::onePlace);
  EXPECT_EQ(status(at(10, 180, 10e3)), DesignStatus::done);
  DesignOptions oblique;
  oblique.families = {ZoneFamily::stereographic, ZoneFamily::obliqueMercator};
  EXPECT_EQ(status(at(10, 180, 10e3), oblique), DesignStatus::acrossDateLine);
  DesignOptions none;
  none.families.clear();
  EXPECT_EQ(status(terrain, none), DesignStatus::badValue);
  DesignOptions beyond;
  beyond.criterion.percentile = 1.5;
  EXPECT_EQ(status(terrain, beyond), DesignStatus::badValue);
  int calls = 0;
  DesignOptions impatient;
  impatient.progress = [&](double share) {
    EXPECT_LE(share, 1);
    return ++calls < 3;
  };
  EXPECT_EQ(status(terrain, impatient), DesignStatus::stopped);
  EXPECT_EQ(calls, 3);
  const std::vector<double> h = terrain.h;
  for (double& each : terrain.h) each = kHole;
  EXPECT_EQ(status(terrain), DesignStatus::noPoints);
  terrain.h = h;
  terrain.b[0] = 2;
  EXPECT_EQ(status(terrain), DesignStatus::badValue);
}

TEST(ZoneDesignTest, ZonesAcrossTheDateLineHaveLongitudesWithinHalfATurn) {
  const ZoneDefinition zone{.family = ZoneFamily::transverseMercator,
                            .lat0 = -17 * kRadPerDeg,
                            .lon0 = -179.8 * kRadPerDeg,
                            .scale = 1.00002};
  Terrain terrain = TerrainOf(zone, -17, 180.05, 30e3, 40e3, 10);
  for (double& l : terrain.l) l = std::remainder(l, 2 * kPi);
  const FamilyDesign found = Design(terrain, ZoneFamily::transverseMercator, DesignMeasure::square);
  EXPECT_NEAR(found.rounded.lon0, zone.lon0, 1e-12);
  EXPECT_EQ(found.rounded.scale, zone.scale);
}

// Weights pull the scale to the heights that matter; a weight of 0 leaves a point out.
TEST(ZoneDesignTest, WeightsCount) {
  Terrain terrain = LatticeAbout(47, 8, 20e3, 20e3, 10, kGrs80,
                                 [](double north, double) { return north > 0 ? 1500.0 : 400.0; });
  std::vector<double> weight(terrain.b.size());
  for (std::size_t i = 0; i < weight.size(); ++i) weight[i] = terrain.h[i] < 1000;
  DesignOptions options;
  options.criterion.measure = DesignMeasure::largest;
  options.families = {ZoneFamily::transverseMercator};
  HeightPoints points = terrain.Points();
  points.weight = weight;
  const ZoneDesign low = DesignZone(points, options);
  ASSERT_EQ(low.status, DesignStatus::done);
  EXPECT_LT(low.used, terrain.b.size());
  EXPECT_NEAR(low.families[0].exact.scale, 1 + 400 / 6380e3, 5e-6);
}

// Coordinates of the published zone are positive and unlike each other and those of its neighbour.
TEST(ZoneDesignTest, FalseOriginKeepsCoordinatesApart) {
  const Terrain terrain =
      LatticeAbout(47, 8, 30e3, 40e3, 6, kGrs80, [](double, double) { return 500.0; });
  const TUTMProj utm(kGrs80.a, kGrs80.invF, 9 * kRadPerDeg, 0.9996, 0, 500e3, 0);
  const TUTMProj local(kGrs80.a, kGrs80.invF, 8 * kRadPerDeg, 1, terrain.b0, 60e3, 150e3);
  DesignOptions options;
  options.ellipsoid = kGrs80;
  options.neighbours = {&utm, &local};
  for (const FamilyDesign& family : DesignZone(terrain.Points(), options).families) {
    double low[2] = {1e9, 1e9}, high[2] = {};
    double otherLow[2] = {1e9, 1e9}, otherHigh[2] = {};
    for (std::size_t i = 0; i < terrain.b.size(); ++i) {
      double own[2] = {terrain.b[i], terrain.l[i]}, other[2] = {terrain.b[i], terrain.l[i]};
      ASSERT_TRUE(family.rounded.Projection(kGrs80)->ForwardPoint(own[0], own[1]));
      ASSERT_TRUE(local.ForwardPoint(other[0], other[1]));
      for (int j = 0; j < 2; ++j) {
        low[j] = std::min(low[j], own[j]);
        high[j] = std::max(high[j], own[j]);
        otherLow[j] = std::min(otherLow[j], other[j]);
        otherHigh[j] = std::max(otherHigh[j], other[j]);
      }
    }
    for (int j = 0; j < 2; ++j) {
      EXPECT_GE(low[j], 10e3);
      EXPECT_TRUE(high[j] < otherLow[j] || otherHigh[j] < low[j]);
    }
    EXPECT_TRUE(high[0] < low[1] || high[1] < low[0]);
    EXPECT_EQ(std::fmod(family.rounded.fEast, 10e3), 0);
    EXPECT_EQ(std::fmod(family.rounded.fNorth, 10e3), 0);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
