#pragma once

#include "geomath/base/angle.h"
#include "geomath/base/rect_rgn.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// The bounds of a region, edges included. Without branches, for columns.
struct RectBounds {
  double south, north, west, east;

  explicit RectBounds(const TRectRgn& r)
      : south(r.dB > 0 ? r.B0 : r.B0 + r.dB),
        north(r.dB > 0 ? r.B0 + r.dB : r.B0),
        west(r.dL > 0 ? r.L0 : r.L0 + r.dL),
        east(r.dL > 0 ? r.L0 + r.dL : r.L0) {}

  /// Whether a point lies inside when `turn` is added to its longitude; that becomes 0, or else 2π,
  /// or else −2π. False for NaN.
  GEOMATH_INLINE bool Inside(double lat, double lon, double& turn) const {
    const bool asItIs = HasLongitude(lon), eastward = HasLongitude(lon + kTwoPi);
    const bool westward = HasLongitude(lon - kTwoPi);
    turn = asItIs ? 0.0 : (eastward ? kTwoPi : -kTwoPi);
    return (lat >= south) & (lat <= north) & (asItIs | eastward | westward);
  }

 private:
  GEOMATH_INLINE bool HasLongitude(double lon) const { return (lon >= west) & (lon <= east); }
};

}  // namespace zel_cs::geomath
