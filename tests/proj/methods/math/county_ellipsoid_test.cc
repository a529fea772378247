#include "geomath/proj/methods/math/county_ellipsoid.h"

#include <gtest/gtest.h>

#include <limits>

namespace zel_cs::geomath {
namespace {

const Ellipsoid kGrs80 = MakeEllipsoid(6378137.0, 298.257222101);

// Terrain at 381 m with a geoid 27 m below the ellipsoid lifts GRS 80 by 354 m; figures by hand.
TEST(CountyEllipsoid, BothAxesAreLifted) {
  const Ellipsoid lifted = CountyEllipsoid(kGrs80, 6378137.0, 6356752.314140356, 381.0, -27.0);
  EXPECT_NEAR(lifted.a, 6378491.0, 2e-9);
  EXPECT_NEAR(lifted.b, 6357106.314140356, 2e-9);
  EXPECT_NEAR(lifted.f * lifted.a, lifted.a - lifted.b, 1e-8);
  EXPECT_NEAR(lifted.n * (lifted.a + lifted.b), lifted.a - lifted.b, 1e-8);
}

TEST(CountyEllipsoid, MissingDesignAxesAreTheBaseOnes) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (double missing : {0.0, -1.0, nan}) {
    const Ellipsoid lifted = CountyEllipsoid(kGrs80, missing, missing, 0, 0);
    EXPECT_EQ(lifted.a, kGrs80.a);
    EXPECT_EQ(lifted.b, kGrs80.b);
  }
}

// Equal axes, as in the factory's placeholders, and a base whose flattening is zero.
TEST(CountyEllipsoid, SpheresHaveNoFlattening) {
  const double inf = std::numeric_limits<double>::infinity();
  for (const Ellipsoid& sphere : {CountyEllipsoid(kGrs80, 6378137.0, 6378137.0, 0, 0),
                                  CountyEllipsoid(MakeEllipsoid(6371000.0, inf), 0, 0, 100, 20)}) {
    EXPECT_EQ(sphere.a, sphere.b);
    for (double zero : {sphere.f, sphere.e, sphere.e2, sphere.ep2, sphere.n}) EXPECT_EQ(zero, 0);
  }
}

TEST(CountyScale, OnlyPositiveScalesCount) {
  EXPECT_EQ(CountyScale(0.99996), 0.99996);
  for (double none : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(CountyScale(none), 1);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
