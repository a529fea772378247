#pragma once

#include "geomath/proj/methods/double_ster_proj.h"

namespace zel_cs::geomath {

/// The oblique stereographic projection under the kind of Romania's Stereographic 1970 (EPSG method
/// 9809 on Krassovsky 1940; origin 46° N 25° E, scale 0.99975, false origin 500000, 500000). In
/// everything but its kind it is TDoubleSter.
class GEOMATH_API TRomaniaSter : public TDoubleSter {
 public:
  /// WGS84, all parameters 0, scale 1. Kept: its kind is that of TDoubleSter.
  TRomaniaSter() = default;
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TRomaniaSter(double a, double invF, double lat0, double lon0, double scale, double fEast,
               double fNorth);
};

}  // namespace zel_cs::geomath
