#pragma once

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/geo_proj.h"
#include "tests/support/tolerance.h"

/// A published position in a grid: latitude and longitude, degrees, northing and easting, metres,
/// and the metres to which the publication prints both together.
struct PublishedPoint {
  const char* name;
  double latDeg, lonDeg, north, east, printed;
};

/// Both directions reach the published figures. Scale and convergence of the point stay stored.
inline void ExpectPublished(zel_cs::geomath::TGeoProj& proj, const PublishedPoint& point) {
  SCOPED_TRACE(point.name);
  constexpr double kMetresPerRadian = 6.3e6;  // the shortest radius of the Earth, rounded down
  const double phi = point.latDeg * tolerance::kDegree, lambda = point.lonDeg * tolerance::kDegree;
  double b = phi, l = lambda;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_NEAR(b, point.north, point.printed);
  EXPECT_NEAR(l, point.east, point.printed);
  double n = point.north, e = point.east;
  ASSERT_TRUE(proj.Inverse(n, e));
  EXPECT_NEAR(n, phi, 2 * point.printed / kMetresPerRadian);
  EXPECT_NEAR(zel_cs::geomath::SetValue(e - lambda, 1) * std::cos(phi), 0,
              2 * point.printed / kMetresPerRadian);
}
