#include "geomath/geodesic/grid_line.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/chain/geoid_models.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/proj/methods/utm_proj.h"
#include "tests/support/harmonic_model.h"

namespace {

using namespace zel_cs::geomath;

constexpr double kA = 6378137, kGrs80 = 298.257222101;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

double Dms(double degrees, double minutes, double seconds) {
  return (degrees + (minutes + seconds / 60) / 60) * kRadPerDeg;
}

TUTMProj Mga55() { return {kA, kGrs80, 147 * kRadPerDeg, 0.9996, 0, 500000, 1e7}; }

// GDA technical manual (ICSM): Flinders Peak and Buninyong, MGA zone 55, to the millimetre. The
// figures beside the published ones are an evaluation of the exact transverse Mercator projection
// and geodesic in 40 digits from the published latitudes and longitudes.
constexpr double kArcSeconds = 1e-4 * kRadPerArcSecond;
constexpr double kMetres = 1e-5;
struct Mark {
  double b, l;
};
const Mark kFlindersPeak{-Dms(37, 57, 3.7203), Dms(144, 25, 29.5244)};
const Mark kBuninyong{-Dms(37, 39, 10.1561), Dms(143, 55, 35.3839)};

GridPoint InGrid(const TGeoProj& proj, const Mark& mark, double h = 0) {
  double n = mark.b, e = mark.l;
  EXPECT_TRUE(proj.ForwardPoint(n, e));
  return {n, e, h};
}

TEST(GridLines, ReachThePublishedLine) {
  const TUTMProj mga = Mga55();
  const GridPoint from = InGrid(mga, kFlindersPeak), to = InGrid(mga, kBuninyong);
  constexpr double kPrinted = 0.0006;  // metres
  EXPECT_NEAR(from.n, 5796489.777, kPrinted);
  EXPECT_NEAR(from.e, 273741.297, kPrinted);
  EXPECT_NEAR(to.n, 5828259.038, kPrinted);
  EXPECT_NEAR(to.e, 228854.051, kPrinted);

  GridLine line;
  ASSERT_TRUE(GridLines(mga).Between(from, to, line));
  EXPECT_NEAR(line.geodesicDistance, 54972.271139, kMetres);
  EXPECT_NEAR(line.azimuth, Dms(306, 52, 5.3731), kArcSeconds);
  EXPECT_NEAR(line.backAzimuth, Dms(127, 10, 25.0703), kArcSeconds);
  EXPECT_NEAR(line.gridDistance, 54992.27923, kMetres);
  EXPECT_NEAR(line.gridBearing, Dms(305, 17, 21.18499), kArcSeconds);
  EXPECT_NEAR(line.convergence1, Dms(1, 35, 3.6473), kArcSeconds);
  EXPECT_NEAR(line.convergence2, Dms(1, 52, 43.2185), kArcSeconds);
  EXPECT_NEAR(line.scale1, 1.000230559, 1e-9);
  EXPECT_NEAR(line.scale2, 1.000505669, 1e-9);
  EXPECT_NEAR(line.arcToChord1, 19.4591 * kRadPerArcSecond, kArcSeconds);
  EXPECT_NEAR(line.arcToChord2, -20.6668 * kRadPerArcSecond, kArcSeconds);
  EXPECT_NEAR(line.lineScale, 1.0003639669705, kMetres / 54972);
  EXPECT_EQ(line.elevationFactor, 1);
  EXPECT_EQ(line.combinedFactor, line.lineScale);
}

// A geoid whose heights and slopes are known: a plane in latitude and longitude.
class TiltedGeoid : public GeoidHeight {
 public:
  static constexpr double kNorthward = 3, kEastward = -5;  // metres a radian
  bool Height(double b, double l, double& height) const override {
    if (b > -0.6) return false;
    height = 40 + kNorthward * b + kEastward * l;
    return true;
  }
};

// A vertical line has no horizontal length, a level line of slope distance s at height h the ground
// distance s but for the curvature, and heights above a geoid are those above the ellipsoid less its.
TEST(GridLines, ReduceThroughTheHeights) {
  const TUTMProj mga = Mga55();
  const GridPoint from = InGrid(mga, kFlindersPeak, 1500), to = InGrid(mga, kBuninyong, 800);
  GridLine line, ellipsoidal;
  const TiltedGeoid geoid;
  ASSERT_TRUE(GridLines(mga).Between(from, to, line));
  EXPECT_EQ(line.combinedFactor, line.lineScale * line.elevationFactor);
  EXPECT_NEAR(line.groundDistance, line.gridDistance / line.combinedFactor, kMetres);

  // The published formula of the way back; the sphere that it takes for the ellipsoid costs 1e-8 of
  // 55 km.
  const double mean = (kFlindersPeak.b + kBuninyong.b) / 2;
  const double R = RadiusInAzimuth(mga.GetEllipsoid(), mean, line.azimuth);
  EXPECT_NEAR(line.elevationFactor, R / (R + 1150), 5e-9);  // the azimuth turns along the line
  EXPECT_NEAR(SlopeToEllipsoid(line.slopeDistance, 1500, 800, R), line.geodesicDistance, 5.5e-4);
  EXPECT_TRUE(std::isnan(SlopeToEllipsoid(5, 0, 6, R)));

  ASSERT_TRUE(GridLines(mga, &geoid).Between(from, to, line));
  double undulation;
  ASSERT_TRUE(geoid.Height(kFlindersPeak.b, kFlindersPeak.l, undulation));
  EXPECT_NEAR(line.height1, 1500 + undulation, kMetres);
  ASSERT_TRUE(GridLines(mga).Between({from.n, from.e, line.height1}, {to.n, to.e, line.height2},
                                     ellipsoidal));
  EXPECT_EQ(line.slopeDistance, ellipsoidal.slopeDistance);
  EXPECT_EQ(line.combinedFactor, ellipsoidal.combinedFactor);
  const GridPoint outside{from.n + 1e6, from.e, 0};  // north of the geoid
  EXPECT_FALSE(GridLines(mga, &geoid).Between(from, outside, line));
}

TEST(GridLines, RadiusInAzimuthIsEulers) {
  const Ellipsoid e = MakeEllipsoid(kA, kGrs80);
  const double s = std::sin(0.7), w = std::sqrt(1 - e.e2 * s * s);
  EXPECT_NEAR(RadiusInAzimuth(e, 0.7, kPi), kA * (1 - e.e2) / (w * w * w), kMetres);
  EXPECT_NEAR(RadiusInAzimuth(e, 0.7, kHalfPi), kA / w, kMetres);
  EXPECT_NEAR(RadiusInAzimuth(e, kHalfPi, 1), e.a * e.a / e.b, kMetres);
}

TEST(GridLines, ManyLinesGiveTheSameAsOne) {
  const TUTMProj mga = Mga55();
  const GridLines lines(mga);
  std::vector<GridPoint> from, to;
  for (int i = 0; i < 150; ++i) {
    from.push_back({5.8e6 + 100 * i, 3e5 + 7 * i, 10.0 * i});
    to.push_back({5.7e6 - 30 * i * i, 2e5 + 900 * i, 5.0 * i});
  }
  to[70] = from[70];
  from[80].n = kNan;
  to[81].e = kNan;
  std::vector<GridLine> reduced(from.size());
  EXPECT_EQ(lines.Between(from.data(), to.data(), reduced.data(), from.size()), from.size() - 2);
  for (std::size_t i = 0; i < from.size(); ++i) {
    GridLine line;
    if (i == 80 || i == 81) {
      EXPECT_FALSE(lines.Between(from[i], to[i], line));
      EXPECT_TRUE(std::isnan(reduced[i].gridDistance) && std::isnan(reduced[i].height2));
      continue;
    }
    ASSERT_TRUE(lines.Between(from[i], to[i], line));
    EXPECT_EQ(reduced[i].geodesicDistance, line.geodesicDistance);
    EXPECT_EQ(reduced[i].arcToChord2, line.arcToChord2);
    EXPECT_EQ(reduced[i].slopeDistance, line.slopeDistance);
  }
  EXPECT_EQ(reduced[70].gridDistance, 0);
  EXPECT_TRUE(std::isnan(reduced[70].lineScale));
}

// A class that computes no factors has those of its own formulas.
TEST(GridLines, ClassesWithoutFactorsAreReducedToo) {
  const TTMProj tm(kA, kGrs80, 147 * kRadPerDeg, 0.9996, 0, 500000, 1e7);
  const GridLines lines(tm);
  const GridPoint from = InGrid(tm, kFlindersPeak), to = InGrid(tm, kBuninyong);
  GridLine line;
  ASSERT_TRUE(lines.Between(from, to, line));
  constexpr double kSeries = 1e-8;  // the short series of the class: 0.5 mm on the line
  EXPECT_NEAR(line.arcToChord1, 19.4591 * kRadPerArcSecond, kSeries);
  EXPECT_NEAR(line.lineScale, 1.0003639669705, kSeries);
  EXPECT_NEAR(line.scale2, 1.000505669, kSeries);
  EXPECT_NEAR(lines.AzimuthTo(from, to), Dms(306, 52, 5.3731), kArcSeconds);
  // The arc that leaves in a bearing is the geodesic of its azimuth.
  const double bearing = line.gridBearing - line.arcToChord1;
  EXPECT_NEAR(lines.AzimuthOfBearing(from, bearing), line.azimuth, 1e-14);
}

TEST(Deflection, ComesFromTheSlopesOfAGeoid) {
  const Ellipsoid e = MakeEllipsoid(kA, kGrs80);
  const TiltedGeoid geoid;
  const double b = -0.66, h = 500;
  Deflection d;
  ASSERT_TRUE(DeflectionAt(geoid, e, b, 2.5, h, d));
  const double M = RadiusInAzimuth(e, b, 0), N = RadiusInAzimuth(e, b, kHalfPi);
  constexpr double kRounding = 1e-12;  // of heights of 40 m over 13 m
  EXPECT_NEAR(d.xi, -TiltedGeoid::kNorthward / (M + h), kRounding);
  EXPECT_NEAR(d.eta, -TiltedGeoid::kEastward / ((N + h) * std::cos(b)), kRounding);
  ASSERT_TRUE(DeflectionAt(geoid, e, -0.6, 2.5, h, d));  // its edge, from the south
  EXPECT_NEAR(d.xi, -TiltedGeoid::kNorthward / (RadiusInAzimuth(e, -0.6, 0) + h), kRounding);
  EXPECT_FALSE(DeflectionAt(geoid, e, -0.59, 2.5, h, d));
}

// EGM96 to degree 36 with its correction: the series differentiated term by term in 40 digits
// (Legendre functions by Heiskanen and Moritz 1967, eq. 1-62), seconds on the WGS84 ellipsoid.
TEST(Deflection, OfAHarmonicModelIsThatOfItsSeries) {
  constexpr double kRows[][5] = {{46.5, 7.25, 1000, -0.0890624568, -0.465850113},
                                 {-37.9, 144.4, 0, -5.89580689, -4.2822462},
                                 {27.9, 86.9, 8000, -10.2914114, -3.44419442},
                                 {64.2, -150, 0, 1.99683451, -0.923448732},
                                 {-0.5, -78.4, 2850, -1.86212446, -3.72308899}};
  constexpr double kDifferences = 1.6e-5;  // seconds: heights to 1e-9 m over 13 m
  const HarmonicModel egm96 = Egm96Degree36();
  const GlobalGeoid model(egm96.Record(37));
  const GlobalGeoidHeight geoid(model);
  const Ellipsoid wgs84 = MakeEllipsoid(kA, 298.257223563);
  std::vector<double> b, l, h;
  for (const auto& row : kRows) {
    b.push_back(row[0] * kRadPerDeg);
    l.push_back(row[1] * kRadPerDeg);
    h.push_back(row[2]);
  }
  Deflection many[std::size(kRows)], d;
  DeflectionsAt(geoid, wgs84, b.data(), l.data(), h.data(), many, b.size());
  for (std::size_t i = 0; i < b.size(); ++i) {
    EXPECT_NEAR(many[i].xi / kRadPerArcSecond, kRows[i][3], kDifferences) << i;
    EXPECT_NEAR(many[i].eta / kRadPerArcSecond, kRows[i][4], kDifferences) << i;
    ASSERT_TRUE(DeflectionAt(geoid, wgs84, b[i], l[i], h[i], d));
    EXPECT_EQ(d.xi, many[i].xi);
    EXPECT_EQ(d.eta, many[i].eta);
  }
  EXPECT_FALSE(DeflectionAt(geoid, wgs84, kHalfPi, 0, 0, d));
}

// Two sights from one station have the corrections of its deflection in their azimuths and zenith
// angles, which are computed from the heights on a sphere of Euler's radius.
TEST(Deflection, CorrectsTheSightsOfALine) {
  const TUTMProj mga = Mga55();
  const TiltedGeoid geoid;
  const GridLines lines(mga, &geoid);
  const GridPoint from = InGrid(mga, kFlindersPeak, 1500);
  for (const GridPoint& to :
       {InGrid(mga, kBuninyong, 800), GridPoint{from.n, from.e + 900, 2100}}) {
    GridLine line;
    PlumbLine plumb;
    Deflection d;
    ASSERT_TRUE(lines.Between(from, to, line));
    ASSERT_TRUE(lines.PlumbAt(from, to, plumb));
    ASSERT_TRUE(
        DeflectionAt(geoid, mga.GetEllipsoid(), kFlindersPeak.b, kFlindersPeak.l, line.height1, d));
    EXPECT_NEAR(plumb.deflection.xi, d.xi, 1e-15);
    const double R = RadiusInAzimuth(mga.GetEllipsoid(), kFlindersPeak.b, line.azimuth);
    const double up = R + line.height1, there = R + line.height2, angle = line.geodesicDistance / R;
    const double zenith = std::atan2(there * std::sin(angle), there * std::cos(angle) - up);
    constexpr double kSphere = 2e-6, kOfDeflection = 1e-3;  // radians; of a correction
    EXPECT_NEAR(plumb.zenith, zenith, kSphere);
    EXPECT_NEAR(plumb.azimuthCorrection, d.AzimuthCorrection(kFlindersPeak.b), 1e-15);
    const double direction = d.DirectionCorrection(line.azimuth, zenith);
    EXPECT_NEAR(plumb.directionCorrection, direction, kOfDeflection * std::abs(direction));
    EXPECT_NEAR(plumb.zenithCorrection, d.ZenithCorrection(line.azimuth), 1e-15);
  }
  PlumbLine none;
  EXPECT_FALSE(GridLines(mga).PlumbAt(from, InGrid(mga, kBuninyong), none));
}

// The corrections against the geometry itself: the direction of a sight in the frame of the plumb
// line, turned into that of the normal by the small rotations ξ and η.
TEST(Deflection, CorrectionsAreTheRotationOfTheFrame) {
  const Deflection d{8e-5, -5e-5};
  const double b = 0.8;
  for (const double azimuth : {0.3, 2.0, 4.5})
    for (const double zenith : {0.9, kHalfPi, 2.0}) {
      // In the plumb line's frame, whose zenith is (ξ, η, 1) in that of the normal, and whose north
      // is turned by η·tan B from the geodetic one.
      const double n = std::sin(zenith) * std::cos(azimuth),
                   e = std::sin(zenith) * std::sin(azimuth), u = std::cos(zenith);
      const double north = n + d.xi * u + d.eta * std::tan(b) * e;
      const double east = e + d.eta * u - d.eta * std::tan(b) * n;
      const double up = u - d.xi * n - d.eta * e;
      constexpr double kSecondOrder = 3e-8;  // squares of the deflections, radians
      const double turned = std::remainder(std::atan2(east, north) - azimuth, kTwoPi);
      EXPECT_NEAR(d.AzimuthCorrection(b) + d.DirectionCorrection(azimuth, zenith), turned,
                  kSecondOrder);
      EXPECT_NEAR(d.ZenithCorrection(azimuth), std::acos(up / std::hypot(north, east, up)) - zenith,
                  kSecondOrder);
    }
}

}  // namespace
