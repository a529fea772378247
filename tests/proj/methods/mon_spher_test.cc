#include "geomath/proj/methods/mon_spher.h"

#include <gtest/gtest.h>

#include "geomath/base/angle.h"
#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kPhi0 = -(21 + 7 / 60.0) * kDegree, kLambda0 = (55 + 32 / 60.0) * kDegree;
constexpr double kPrinted = 6e-6;  // PROJ 9.1.1, five decimals
constexpr double kInverse = 2e-5;  // those in latitude and longitude

// Réunion, PROJ 9.1.1 `gstmerc`; then a normal latitude of 47° with the origin on it.
TEST(MonSpher, GaussSchreiberGrids) {
  TMonSpher reunion(6378388, 297, kPhi0, kLambda0, kPhi0, 1, 1, 160000, 50000, 0);
  for (const WorkedExample& point : {
           WorkedExample{-20.9, 55.4, 73983.34644, 146127.48723},
           {-21.35, 55.7, 24155.73676, 177288.41306},
           {-19, 57, 283685.85816, 314447.97827},
           {-23, 52, -162917.36549, -202422.04667},
       }) {
    ExpectBothWays(reunion, point, kPrinted, kInverse);
  }
  TMonSpher north(6378388, 297, 47 * kDegree, 10 * kDegree, 47 * kDegree, 1, 0.9999, 0, 0, 0);
  ExpectBothWays(north, {47.5, 10.5, 55705.36434, 37669.74850}, kPrinted, kInverse);
}

// Snyder 1987, appendix A, transverse Mercator of the sphere with radius 1, printed to 1e-7: the
// sphere is its own conformal sphere.
TEST(MonSpher, ReproducesSnydersSphere) {
  constexpr double kPrintedSphere = 0.5e-7;
  TMonSpher sphere(1, 1e300, 0, -75 * kDegree, 0, 1, 1, 0, 0, 0);
  double n = 40.5 * kDegree, e = -73.5 * kDegree;
  ASSERT_TRUE(sphere.Forward(n, e));
  EXPECT_NEAR(n, 0.7070276, kPrintedSphere);
  EXPECT_NEAR(e, 0.0199077, kPrintedSphere);
  EXPECT_NEAR(sphere.GetScale(), 1.0001982, kPrintedSphere);
  n = 0.7070276;
  e = 0.0199077;
  ASSERT_TRUE(sphere.Inverse(n, e));
  EXPECT_NEAR(n, 40.5 * kDegree, kPrintedSphere);
  EXPECT_NEAR(e, -73.5 * kDegree, kPrintedSphere / std::cos(n));
}

// Chosen readings: k1 and the scale multiply one radius, and the axis azimuth turns the plane about
// the false origin.
TEST(MonSpher, K1AndAxisAzimuth) {
  const double theta = 30 * kDegree, k = 0.9997;
  TMonSpher turned(6378388, 297, kPhi0, kLambda0, kPhi0, 0.9998, k / 0.9998, 160000, 50000, theta);
  const double y = k * (73983.34644 - 50000), x = k * (146127.48723 - 160000);
  const double north = 50000 + y * std::cos(theta) - x * std::sin(theta);
  const double east = 160000 + y * std::sin(theta) + x * std::cos(theta);
  ExpectBothWays(turned, {-20.9, 55.4, north, east}, 2 * kPrinted, kInverse);
}

// The pole of the cylinder: on the equator of a sphere, 90° beside the central meridian.
TEST(MonSpher, FailsAtTheEndsOfTheCylinder) {
  const TMonSpher sphere(6371000, 1e300, 0, 0, 0, 1, 1, 0, 0, 0);
  double b = 0, l = kHalfPi;
  EXPECT_FALSE(sphere.ForwardPoint(b, l));
  EXPECT_EQ(l, kHalfPi);
  l = kHalfPi - 1e-3;
  EXPECT_TRUE(sphere.ForwardPoint(b, l));
}

}  // namespace
}  // namespace zel_cs::geomath
