#pragma once

#include <cmath>

#include "geomath/base/rect_bounds.h"
#include "geomath/geoid/grid/grid_stencil.h"

/// What a query of a regional grid does to every point, whatever the rule. Without branches.
namespace zel_cs::geomath {

/// Cuts a point down to multiples of 1e-12 rad, the resolution of a query, and turns it into
/// `bounds`; whether it is inside then.
GEOMATH_INLINE bool Locate(const RectBounds& bounds, double& lat, double& lon) {
  constexpr double kUnits = 1e12;  // in a radian
  lat = RoundDown(lat * kUnits) / kUnits;
  lon = RoundDown(lon * kUnits) / kUnits;
  double turn;
  const bool inside = bounds.Inside(lat, lon, turn);
  lon += turn;
  return inside;
}

/// Whether a height is none: no undulation on Earth comes near 999 m.
GEOMATH_INLINE bool IsInvalid(double height) { return std::abs(height) >= 999.0; }

}  // namespace zel_cs::geomath
