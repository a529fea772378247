#pragma once

#include <cstddef>

#include "geomath/base/ellipsoid.h"

namespace zel_cs::geomath {

/// Geodetic and geocentric coordinates over columns of points, in place.
template <class Target>
struct EllipsoidKernel {
  /// Angles below 1e5 radians.
  static void ToGeocentric(const Ellipsoid& ell, double* B, double* L, double* H,
                           std::size_t count);
  /// Points farther than a/2 and nearer than 1e6·a from the centre: two Newton steps are then exact
  /// to rounding.
  static void ToGeodetic(const Ellipsoid& ell, double* X, double* Y, double* Z, std::size_t count);
};

}  // namespace zel_cs::geomath
