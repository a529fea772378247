#pragma once

#include <cmath>

#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/stem_transverse_mercator.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// StemTransverseMercator about a central meridian, with false coordinates, for the columns of the
/// 1983 state plane zones and the county grids.
struct StemTmFormulas {
  StemTransverseMercator tm;
  double lambda0, fEast, fNorth;

  template <class Math>
  GEOMATH_INLINE void Forward(typename Math::Real& b, typename Math::Real& l) const {
    const auto [north, east] = tm.Project<Math>(b, FoldTurn(l - lambda0)).plane;
    b = fNorth + north;
    l = fEast + east;
  }

  template <class Math>
  GEOMATH_INLINE void Inverse(double& n, double& e) const {
    const auto [phi, deltaLambda] = tm.Unproject<Math>(n - fNorth, e - fEast).geographic;
    n = phi;
    e = lambda0 + deltaLambda;
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < simd::kMaxAngle;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return latitude & longitude;
  }
  GEOMATH_INLINE bool ServesInverse(double n, double) const {
    return std::abs(tm.Rectifying(n - fNorth)) < simd::kMaxAngle;
  }
};

}  // namespace zel_cs::geomath
