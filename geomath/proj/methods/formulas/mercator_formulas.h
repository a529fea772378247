#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// TMercatorProj with its constants prepared. Equation numbers are Snyder 1987.
struct MercatorFormulas {
  ConformalLatitude latitude;
  double lambda0, fEast, fNorth;
  double aK0;  // radius of the equator on the map, metres

  /// Returns what the factors follow from.
  template <class Math>
  GEOMATH_INLINE SineCosineOf<typename Math::Real> Forward(typename Math::Real& b,
                                                           typename Math::Real& l) const {
    SineCosineOf<typename Math::Real> phi;
    Math::SinCos(b, phi.sin, phi.cos);
    b = fNorth + aK0 * latitude.Isometric<Math>(phi.sin, phi.cos);  // 7-7
    l = fEast + aK0 * FoldTurn(l - lambda0);                        // 7-6
    return phi;
  }

  template <class Math>
  GEOMATH_INLINE void Inverse(double& n, double& e) const {
    n = latitude.FromIsometric<Math>((n - fNorth) / aK0);  // 7-9
    e = lambda0 + (e - fEast) / aK0;                       // 7-12
  }

  GEOMATH_INLINE bool ServesForward(double b, double) const {
    return latitude.ServesColumns() && std::abs(b) < kHalfPi;
  }
  GEOMATH_INLINE bool ServesInverse(double n, double) const {
    return latitude.ServesColumns() && std::isfinite((n - fNorth) / aK0);
  }
};

}  // namespace zel_cs::geomath
