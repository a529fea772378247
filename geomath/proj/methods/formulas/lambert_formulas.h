#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/column_range.h"
#include "geomath/proj/methods/math/lambert_cone.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// LambertCone about a meridian of origin, with false coordinates. Equations are Snyder 1987.
struct LambertFormulas {
  LambertCone cone;
  double lambda0, fEast, fNorth;
  double rho0;  // radius of the origin, metres

  /// Returns what the factors follow from.
  template <class Math>
  GEOMATH_INLINE LambertCone::ImageOf<typename Math::Real> Forward(typename Math::Real& b,
                                                                   typename Math::Real& l) const {
    using Real = typename Math::Real;
    const LambertCone::ImageOf<typename Math::Real> image =
        cone.Project<Math>(b, FoldTurn(l - lambda0));
    Real sinTheta, cosTheta;
    Math::SinCos(image.at.theta, sinTheta, cosTheta);
    b = fNorth + (rho0 - image.at.rho * cosTheta);  // 14-2
    l = fEast + image.at.rho * sinTheta;            // 14-1
    return image;
  }

  template <class Math>
  GEOMATH_INLINE LambertCone::Polar Inverse(double& n, double& e) const {
    const LambertCone::Polar at = cone.ToPolar<Math>(FromApex(n), e - fEast);
    Unproject<Math>(at, n, e);
    return at;
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < kHalfPi;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return latitude & longitude & cone.ServesColumns();
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    return ServesPlane(FromApex(n), e - fEast);
  }

 protected:
  GEOMATH_INLINE double FromApex(double n) const { return rho0 - (n - fNorth); }

  template <class Math>
  GEOMATH_INLINE void Unproject(const LambertCone::Polar& at, double& b, double& l) const {
    double deltaLambda;
    cone.Unproject<Math>(at, b, deltaLambda);
    l = lambda0 + deltaLambda;
  }

  GEOMATH_INLINE bool ServesPlane(double fromApex, double east) const {
    constexpr double kLeast = 1e-12;  // square metres
    const double rho2 = fromApex * fromApex + east * east;
    const bool offApex = rho2 > kLeast, moderate = rho2 < kLargestSquaredRadius;
    return offApex & moderate & cone.ServesColumns();
  }
};

/// TLCProj, whose inverse has a radius of the origin and a polar angle of its own.
struct LcFormulas : LambertFormulas {
  double inverseRho0;  // metres

  /// Kept: the one-argument arctangent, completed east about, and the apex itself for n = 0.
  template <class Math>
  GEOMATH_INLINE LambertCone::Polar Inverse(double& n, double& e) const {
    const double fromApex = InverseFromApex(n), east = e - fEast;
    const double sign = cone.Sign(), above = sign * fromApex;
    const double rho = sign * std::sqrt(fromApex * fromApex + east * east);
    const double theta = Math::Atan(east / fromApex) + (above < 0 ? kPi : 0.0);
    const bool plane = cone.n() == 0;
    const LambertCone::Polar at{plane ? 0.0 : rho, plane ? 0.0 : theta};
    Unproject<Math>(at, n, e);
    return at;
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    return ServesPlane(InverseFromApex(n), e - fEast);
  }

 private:
  GEOMATH_INLINE double InverseFromApex(double n) const { return inverseRho0 - (n - fNorth); }
};

}  // namespace zel_cs::geomath
