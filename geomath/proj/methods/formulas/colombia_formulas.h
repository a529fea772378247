#pragma once

#include <cmath>

#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/latitude_dual.h"

namespace zel_cs::geomath {

/// TColombiaProj with its constants prepared. Symbols of EPSG method 1052, its plane height being 0:
/// ρ0 rho0   B B
struct ColombiaFormulas {
  double a, e2;
  double phi0, lambda0, fEast, fNorth;
  double rho0;  // radius of curvature in the meridian of the origin, metres
  double B;     // tan φ0/(2·ρ0·ν0), per square metre

  template <class Math>
  GEOMATH_INLINE void Forward(typename Math::Real& b, typename Math::Real& l) const {
    using Latitude = simd::LatitudeMath<Math>;
    const typename Latitude::Real phi = Latitude::Of(b);
    const typename Math::Real x = Parallel<Latitude>(phi) * FoldTurn(l - lambda0);
    b = fNorth + rho0 * ((phi - phi0) + B * (x * x));
    l = fEast + x;
  }

  template <class Math>
  GEOMATH_INLINE void Inverse(double& n, double& e) const {
    const double phi = Latitude(n, e), x = e - fEast;
    n = phi;
    e = lambda0 + x / Parallel<Math>(phi);
  }

  GEOMATH_INLINE bool ServesForward(double b, double) const {
    return std::abs(b) < simd::kMaxAngle;
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    return std::abs(Latitude(n, e)) < simd::kMaxAngle;
  }

 private:
  // Radius of the parallel, metres.
  template <class Math>
  GEOMATH_INLINE typename Math::Real Parallel(typename Math::Real phi) const {
    using Real = typename Math::Real;
    Real s, c;
    Math::SinCos(phi, s, c);
    return a * ParallelRadius(s, c, e2);
  }

  GEOMATH_INLINE double Latitude(double n, double e) const {
    const double x = e - fEast;
    return phi0 + (n - fNorth) / rho0 - B * (x * x);
  }
};

}  // namespace zel_cs::geomath
