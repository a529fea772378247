#include "geomath/geodesic/geodesic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/simd/instruction_set.h"

namespace {

using namespace zel_cs::geomath;

constexpr double kA = 6378137;
constexpr double kGrs80 = 298.257222101;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// The promise of the class for |f| < 1/150; the flatter figures of the rows keep to twice that.
constexpr double kPositionMetres = 15e-9;
constexpr double kSmallestRadius = 6.2e6;  // metres, of the figures here
// Of a square metre; the promise is 0.1 m² for a thousand kilometres.
constexpr double kAreaMetres2 = 0.1;

double Rad(double degrees) { return degrees * kRadPerDeg; }

// The distance between two positions that are close, metres.
double Apart(double b1, double l1, double b2, double l2) {
  return 6.4e6 * std::hypot(b1 - b2, std::remainder(l1 - l2, kTwoPi) * std::cos(b2));
}

// Evaluated with 40 digits from the integrals over the arc (mpmath): distance, longitude as
// ∫ sin α/(N cos φ) ds and area to the equator as ∫∫ MN cos φ dφ dλ. Degrees, metres, start at
// longitude 0.
struct Row {
  double invF, lat, azimuth, distance, endLat, endLon, backAzimuth, area;
};
constexpr Row kIntegrals[] = {
    {kGrs80, -37.95, 306.87, 54972.27, -37.6517750361213025, -0.498353351176441783,
     127.175452628390583, 215784876812.405157},
    {kGrs80, 40, 30, 1e7, 41.7933102054876893, 137.844900043234585, 329.090169317859287,
     84275623420833.5476},
    {kGrs80, -30, 89.9, 1.99e7, 29.9987127165238207, 178.661434222227174, 269.692209457814503,
     -146709664283.251142},
    {kGrs80, 60, 100, 500, 59.9992204007845188, 0.00882423439586631243, 280.007641981142654,
     5407689090.45022781},
    {kGrs80, 5, 64.99, 1.5e7, 13.6636448592226128, 138.469864265437454, 291.731481064373424,
     32984889766271.6351},
    {-150, 35, 47, 1.2e7, 20.9339670770259453, 132.03232595995483, 320.165799335429168,
     66719793847971.6995},
    {-150, -10, 115, 3e5, -11.1152205300519302, 2.48962881939371379, 294.543750126809931,
     -328177487613.024398},
    {50, 20, 60, 1.1e7, 24.2158739030450469, 109.748881235852564, 296.949641449633534,
     39124937084794.2823},
    {50, -48, 170, 2.5e6, -69.7346101165550659, 10.8499740667689822, 340.535189637658486,
     -6588863155999.73764},
};

TEST(Geodesic, AgreesWithTheIntegralsInFortyDigits) {
  for (const Row& r : kIntegrals) {
    SCOPED_TRACE(r.azimuth);
    const Geodesic geodesic(MakeEllipsoid(kA, r.invF));
    const double tolerance = (std::abs(r.invF) < 150 ? 2 : 1) * kPositionMetres;
    const double b1 = Rad(r.lat), b2 = Rad(r.endLat), l2 = Rad(r.endLon);

    const GeodesicEnd end = geodesic.Direct(b1, 0, Rad(r.azimuth), r.distance);
    EXPECT_LT(Apart(end.b, end.l, b2, l2), tolerance);
    EXPECT_NEAR(end.backAzimuth, Rad(r.backAzimuth), tolerance / kSmallestRadius);
    const GeodesicEnd along = geodesic.Line(b1, 0, Rad(r.azimuth)).At(r.distance);
    EXPECT_EQ(along.b, end.b);
    EXPECT_EQ(along.l, end.l);

    const GeodesicMeasure line = geodesic.Inverse(b1, 0, b2, l2);
    EXPECT_NEAR(line.distance, r.distance, tolerance);
    // What an azimuth may err displaces the end by the reduced length of the line, and the line's
    // middle by more where the ends are nearly antipodal.
    const double reach = kSmallestRadius * std::abs(std::sin(r.distance / kSmallestRadius));
    const double direction = tolerance / std::min(reach, r.distance);
    EXPECT_NEAR(line.azimuth, Rad(r.azimuth), direction);
    EXPECT_NEAR(line.backAzimuth, Rad(r.backAzimuth), direction);
    const double swept = direction * kSmallestRadius * r.distance;
    const double b[] = {b1, b2, 0, 0},
                 l[] = {0, l2, l2, 0};  // clockwise where the area is positive
    EXPECT_NEAR(geodesic.Area(b, l, 4).area, -r.area, std::max(kAreaMetres2, swept));
  }
}

// GDA technical manual (ICSM), chapter 5: Flinders Peak to Buninyong, GRS80.
TEST(Geodesic, ReachesThePublishedLine) {
  const Geodesic geodesic(MakeEllipsoid(kA, kGrs80));
  constexpr double kPrintedMetres = 0.0005, kPrintedRadians = 0.006 * kRadPerArcSecond;
  const GeodesicMeasure line = geodesic.Inverse(
      -Rad(37 + 57 / 60.0 + 3.72030 / 3600), Rad(144 + 25 / 60.0 + 29.52440 / 3600),
      -Rad(37 + 39 / 60.0 + 10.15610 / 3600), Rad(143 + 55 / 60.0 + 35.38390 / 3600));
  EXPECT_NEAR(line.distance, 54972.271, kPrintedMetres);
  EXPECT_NEAR(line.azimuth, Rad(306 + 52 / 60.0 + 5.37 / 3600), kPrintedRadians);
  EXPECT_NEAR(line.backAzimuth, Rad(127 + 10 / 60.0 + 25.07 / 3600), kPrintedRadians);
}

// Every pair: the direct problem from the solved azimuth and distance arrives at the second point,
// the line back is as long, and no path over a pole is shorter.
TEST(Geodesic, ClosesForAwkwardPairs) {
  constexpr double kLatitudes[] = {0,   90, -90, 1e-12,      -1e-12,      30,
                                   -30, 45, -45, 89.9999999, -89.9999999, 30.0000001};
  constexpr double kLongitudes[] = {0, 180, -180, 90, 179.9, 179.5, -179.3, 1e-12, 0.5, 168};
  for (const double invF : {kGrs80, -kGrs80, 1e300, 151.0, -151.0, 50.0, -50.0}) {
    const Ellipsoid ellipsoid = MakeEllipsoid(kA, invF);
    const Geodesic geodesic(ellipsoid);
    for (const double lat1 : kLatitudes)
      for (const double lat2 : kLatitudes)
        for (const double lon2 : kLongitudes) {
          SCOPED_TRACE(::testing::Message()
                       << invF << ": " << lat1 << ", " << lat2 << ", " << lon2);
          const double b1 = Rad(lat1), b2 = Rad(lat2), l2 = Rad(lon2);
          const GeodesicMeasure line = geodesic.Inverse(b1, 0, b2, l2);
          const GeodesicMeasure back = geodesic.Inverse(b2, l2, b1, 0);
          EXPECT_NEAR(line.distance, back.distance, kPositionMetres);
          const GeodesicEnd end = geodesic.Direct(b1, 0, line.azimuth, line.distance);
          EXPECT_LT(Apart(end.b, end.l, b2, l2), kPositionMetres);
          const double overPole = geodesic.Inverse(b1, 0, kHalfPi, 0).distance +
                                  geodesic.Inverse(b2, 0, kHalfPi, 0).distance;
          EXPECT_LE(line.distance, overPole + kPositionMetres);
          EXPECT_GE(line.azimuth, 0);
          EXPECT_LT(line.azimuth, kTwoPi);
        }
  }
}

TEST(Geodesic, MeridiansAndTheEquator) {
  const Ellipsoid ellipsoid = MakeEllipsoid(kA, kGrs80);
  const Geodesic geodesic(ellipsoid);
  // ∫ M dφ, evaluated with 30 digits.
  constexpr double kQuadrant = 10001965.7292304636915;
  EXPECT_NEAR(geodesic.Inverse(0, 0, kHalfPi, 0).distance, kQuadrant, kPositionMetres);
  EXPECT_NEAR(geodesic.Inverse(0, -1, 0, 1).distance, 2 * kA, kPositionMetres);
  // Beyond (1 − f)·180° the equator is no shortest line; the northern of the two equal ones.
  const GeodesicMeasure beside = geodesic.Inverse(0, 0, 0, Rad(179.9));
  EXPECT_LT(beside.distance, kA * Rad(179.9));
  EXPECT_LT(beside.azimuth, kHalfPi);
  // Antipodes on the equator lie half a meridian apart.
  const GeodesicMeasure antipodes = geodesic.Inverse(0, 0, 0, kPi);
  EXPECT_NEAR(antipodes.distance, 2 * kQuadrant, kPositionMetres);
  EXPECT_EQ(antipodes.azimuth, 0);
  const GeodesicMeasure nowhere = geodesic.Inverse(0.5, 1, 0.5, 1 - kTwoPi);
  EXPECT_NEAR(nowhere.distance, 0, kPositionMetres);
  const GeodesicMeasure same = geodesic.Inverse(0.5, 1, 0.5, 1);
  EXPECT_EQ(same.distance, 0);
  EXPECT_EQ(same.azimuth, 0);
  EXPECT_EQ(same.backAzimuth, 0);
}

// Millimetres keep their digits: distance and azimuth of a line of a millimetre against the metric
// of the ellipsoid, M dφ and N cos φ dλ, whose curvature is 1e-10 of it.
TEST(Geodesic, ShortLinesKeepTheirDigits) {
  const Ellipsoid e = MakeEllipsoid(kA, kGrs80);
  const double b = 0.75, db = 1.2e-10, dl = 1e-10, w2 = 1 - e.e2 * std::sin(b) * std::sin(b);
  const double b2 = b + db;
  const double north = kA * (1 - e.e2) / (w2 * std::sqrt(w2)) * (b2 - b);
  const double east = kA / std::sqrt(w2) * std::cos(b + db / 2) * dl;
  const GeodesicMeasure line = Geodesic(e).Inverse(b, 0, b2, dl);
  constexpr double kRelative = 3e-9;  // the rounding of the sphere, 3e-12 m
  EXPECT_NEAR(line.distance, std::hypot(north, east), kRelative * std::hypot(north, east));
  EXPECT_NEAR(line.azimuth, std::atan2(east, north), kRelative);
}

// Evaluated as kIntegrals, with the arc given: on both sides of the limits within which pairs are
// close, 0.012 radians and 1.4 in latitude. Radians and metres, start at longitude 0.
struct ClosePair {
  double lat, endLat, endLon, distance, azimuth, endAzimuth;
};
constexpr ClosePair kClosePairs[] = {
    {0, 1.154950129778343079e-6, 0.01190993385710989573, 75963.19015397736544, 1.5707,
     1.570700006877771674},
    {0, 1.164614518570471079e-6, 0.01200959857557952405, 76598.86538539140389, 1.5707,
     1.570700006993361053},
    {0.3, 0.3119303843896059657, 0.0002492037340839820479, 75668.33817882215087, 0.02,
     0.02007506491532951996},
    {0.3, 0.3122311430291251599, 0.0002555105890146259718, 77575.96592120577757, 0.02,
     0.02007700136928764289},
    {-0.9, -0.906881179598220683, 0.01543045097768820361, 75165.05930990897888, 2.2,
     2.187879818733853138},
    {1.399, 1.400015970866722414, 0.009375950150285226174, 12117.27403896190824, 1,
     1.009238745508471366},
    {1.3998, 1.400940934138570929, -0.005697419870017661949, 9566.278284004513114, -0.7,
     -0.70561488058871601},
    {1.4005, 1.40164092093324679, -0.005720770095479752556, 9566.285810901409064, -0.7,
     -0.7056385703268353021},
    {-1.2, -1.19999547514491532, -0.00002451193514323200581, 63.75316777525989544, -1.1,
     -1.099977153938468748},
    {0.0001, 0.00009975884837962178179, -1.789396749824455151e-7, 1.90702569430578472, -2.5,
     -2.500000000017872392},
};

TEST(Geodesic, ClosePairsHaveFortyDigits) {
  const Geodesic geodesic(MakeEllipsoid(kA, kGrs80));
  constexpr double kRounding = 2e-9;  // metres: of positions in radians
  for (const ClosePair& pair : kClosePairs) {
    const GeodesicMeasure line = geodesic.Inverse(pair.lat, 0, pair.endLat, pair.endLon);
    EXPECT_NEAR(line.distance, pair.distance, kRounding);
    const auto across = [&](double azimuth, double exact) {
      return std::remainder(azimuth - exact, kTwoPi) * pair.distance;
    };
    EXPECT_NEAR(across(line.azimuth, pair.azimuth), 0, kRounding) << pair.distance;
    EXPECT_NEAR(across(line.backAzimuth + kPi, pair.endAzimuth), 0, kRounding) << pair.distance;
  }
}

TEST(Geodesic, AreasOfKnownFigures) {
  const Geodesic geodesic(MakeEllipsoid(kA, kGrs80));
  const double whole = geodesic.EllipsoidArea();
  // The radius of the sphere of the same area, evaluated with 30 digits.
  EXPECT_NEAR(std::sqrt(whole / (4 * kPi)), 6371007.18088351710261735, kPositionMetres);

  constexpr double kRounding = 1e-15;  // of the whole
  const double octantB[] = {0, 0, kHalfPi}, octantL[] = {0, kHalfPi, 0};
  EXPECT_NEAR(geodesic.Area(octantB, octantL, 3).area, whole / 8, kRounding * whole);
  // About a pole, across the antimeridian and backwards.
  const double capB[] = {1.2, 1.2, 1.2}, capL[] = {-3, -1, 1};
  const double reverseL[] = {1, -1, -3}, southB[] = {-1.2, -1.2, -1.2};
  const GeodesicPolygon cap = geodesic.Area(capB, capL, 3);
  EXPECT_GT(cap.area, 0);
  EXPECT_LT(cap.area, whole / 20);
  EXPECT_NEAR(geodesic.Area(capB, reverseL, 3).area, -cap.area, kRounding * whole);
  EXPECT_NEAR(geodesic.Area(southB, reverseL, 3).area, cap.area, kRounding * whole);
  const double split[] = {1.2, 1.2, kHalfPi}, splitL[] = {-3, -1, 0}, second[] = {-1, 1, 0},
               third[] = {1, -3, 0};
  EXPECT_NEAR(geodesic.Area(split, splitL, 3).area + geodesic.Area(split, second, 3).area +
                  geodesic.Area(split, third, 3).area,
              cap.area, kRounding * whole);
  EXPECT_NEAR(cap.perimeter,
              geodesic.Inverse(1.2, -3, 1.2, -1).distance +
                  geodesic.Inverse(1.2, -1, 1.2, 1).distance +
                  geodesic.Inverse(1.2, 1, 1.2, -3).distance,
              3 * kPositionMetres);
  EXPECT_EQ(geodesic.Area(nullptr, nullptr, 0).area, 0);
  EXPECT_EQ(geodesic.Area(octantB, octantL, 2).area, 0);
}

TEST(Geodesic, BatchesGiveTheBitsOfSingleCallsOnEverySet) {
  constexpr std::size_t kCount = 3001;  // several blocks and a rest
  std::mt19937_64 random(20131);
  std::uniform_real_distribution<double> unit(-1, 1);
  std::vector<double> b1(kCount), l1(kCount), b2(kCount), l2(kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    b1[i] = std::asin(unit(random));
    l1[i] = kPi * unit(random);
    const bool antipodal = i % 50 == 0;
    b2[i] = antipodal ? -b1[i] + 1e-3 * unit(random) : std::asin(unit(random));
    l2[i] = antipodal ? l1[i] + kPi + 1e-3 * unit(random) : kPi * unit(random);
  }
  b1[1] = kNan;
  l2[2] = kNan;
  b2[3] = 1.6;
  l1[4] = 7;
  b1[5] = std::numeric_limits<double>::infinity();
  for (const Geodesic& geodesic :
       {Geodesic(MakeEllipsoid(kA, kGrs80)), Geodesic(MakeEllipsoid(kA, 20))})
    for (const auto set : {simd::InstructionSet::baseline, simd::InstructionSet::avx2,
                           simd::InstructionSet::avx512}) {
      const auto before = simd::ForceInstructionSet(set);
      std::vector<double> s(kCount), azimuth(kCount), back(kCount), b = b1, l = l1;
      EXPECT_EQ(geodesic.InverseBatch(b1.data(), l1.data(), b2.data(), l2.data(), s.data(),
                                      azimuth.data(), back.data(), kCount),
                kCount - 5);
      EXPECT_EQ(geodesic.DirectBatch(b.data(), l.data(), azimuth.data(), s.data(), b.data(),
                                     l.data(), azimuth.data(), kCount),
                kCount - 5);
      simd::ForceInstructionSet(before);
      for (std::size_t i = 0; i < kCount; ++i) {
        if (i >= 1 && i <= 5) {
          EXPECT_TRUE(std::isnan(s[i]) && std::isnan(back[i]) && std::isnan(b[i])) << i;
          EXPECT_TRUE(std::isnan(geodesic.Inverse(b1[i], l1[i], b2[i], l2[i]).azimuth)) << i;
          continue;
        }
        const GeodesicMeasure line = geodesic.Inverse(b1[i], l1[i], b2[i], l2[i]);
        const GeodesicEnd end = geodesic.Direct(b1[i], l1[i], line.azimuth, line.distance);
        EXPECT_EQ(s[i], line.distance);
        EXPECT_EQ(back[i], line.backAzimuth);
        EXPECT_EQ(b[i], end.b);
        EXPECT_EQ(l[i], end.l);
        EXPECT_EQ(azimuth[i], end.backAzimuth);
      }
    }
}

TEST(Geodesic, RefusesWhatHasNoMeaning) {
  const Geodesic geodesic(MakeEllipsoid(kA, kGrs80));
  EXPECT_TRUE(std::isnan(geodesic.Direct(1.6, 0, 0, 1).b));
  EXPECT_TRUE(std::isnan(geodesic.Direct(0, 0, kNan, 1).b));
  EXPECT_TRUE(std::isnan(geodesic.Direct(0, 0, 0, 2e9).b));
  EXPECT_TRUE(std::isnan(geodesic.Line(0, 7, 0).At(1).l));
  EXPECT_TRUE(std::isnan(geodesic.Line(0, 0, 0).At(kNan).l));
  const double b[] = {0, kNan, 1}, l[] = {0, 1, 1};
  EXPECT_TRUE(std::isnan(geodesic.Area(b, l, 3).area));
  // Far round the Earth, and back.
  const GeodesicEnd far = geodesic.Direct(0.3, 1, 0.7, 1e9);
  const GeodesicEnd home = geodesic.Direct(far.b, far.l, far.backAzimuth, 1e9);
  constexpr double kRounding = 1e-6;  // metres, of 1e9
  EXPECT_LT(Apart(home.b, home.l, 0.3, 1), kRounding);
}

}  // namespace
