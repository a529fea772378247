#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/export.h"

namespace zel_cs::geomath {

/// Radii of curvature of an ellipsoid at latitude B, radians; metres.
GEOMATH_API double MeridianRadius(const Ellipsoid& ellipsoid, double B);       ///< ρ
GEOMATH_API double PrimeVerticalRadius(const Ellipsoid& ellipsoid, double B);  ///< ν

}  // namespace zel_cs::geomath
