#pragma once

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/proj/geo_proj.h"
#include "tests/support/tolerance.h"

/// A point and its grid coordinates: degrees north and east, metres.
struct WorkedExample {
  double lat, lon, north, east;
};

/// The forward conversion gives the grid coordinates, the inverse of these the point; both
/// differences are metres, that of the inverse on the ground.
inline void ExpectBothWays(zel_cs::geomath::TGeoProj& proj, const WorkedExample& x,
                           double forwardMetres, double inverseMetres) {
  SCOPED_TRACE(testing::Message() << "latitude " << x.lat << ", longitude " << x.lon);
  const double phi = x.lat * tolerance::kDegree, lambda = x.lon * tolerance::kDegree;
  const double a = proj.GetEllipsoid().a;
  double b = phi, l = lambda;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_NEAR(b, x.north, forwardMetres);
  EXPECT_NEAR(l, x.east, forwardMetres);
  double n = x.north, e = x.east;
  ASSERT_TRUE(proj.Inverse(n, e));
  EXPECT_NEAR((n - phi) * a, 0, inverseMetres);
  EXPECT_NEAR((e - lambda) * a * std::cos(phi), 0, inverseMetres);
}
