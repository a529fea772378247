#pragma once

#include <cmath>

#include "geomath/proj/methods/math/cassini.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// CassiniSoldner with a scale on both coordinates and false ones.
struct CassiniFormulas {
  CassiniSoldner cassini;
  double scale, fEast, fNorth;

  template <class Math>
  GEOMATH_INLINE void Forward(typename Math::Real& b, typename Math::Real& l) const {
    const auto [north, east] = cassini.Forward<Math>(b, l);
    b = fNorth + scale * north;
    l = fEast + scale * east;
  }

  template <class Math>
  GEOMATH_INLINE void Inverse(double& n, double& e) const {
    const auto [phi, lambda] = cassini.Inverse<Math>((n - fNorth) / scale, (e - fEast) / scale);
    n = phi;
    e = lambda;
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < simd::kMaxAngle;
    const bool longitude = std::abs(l - cassini.OriginLongitude()) < simd::kMaxAngle;
    return latitude & longitude;
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    return std::abs(cassini.Rectifying((n - fNorth) / scale, (e - fEast) / scale)) <
           simd::kMaxAngle;
  }
};

}  // namespace zel_cs::geomath
