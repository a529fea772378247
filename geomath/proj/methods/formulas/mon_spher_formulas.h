#pragma once

#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/conformal_sphere.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// TMonSpher with its constants prepared. Equation numbers are Snyder 1987, transverse Mercator of
/// the sphere, with spherical latitude χ and longitude Λ = m·Δλ for his φ and λ; m is sphere.alpha.
/// x and y count from the origin before the axes are turned by θ. The arc to the side of the central
/// meridian, whose sine is his B, is the latitude of the sphere on which the meridian is the equator
/// and D the longitude.
struct MonSpherFormulas {
  ConformalSphere sphere;
  double lambda0, fEast, fNorth;
  double R;                   // scaled radius of the sphere, metres
  double chi0;                // spherical latitude of the origin
  double sinTheta, cosTheta;  // of the axis azimuth

  /// Cosines of the spherical latitude and of the arc to the side, from which the point scale
  /// follows.
  template <class Real>
  struct PositionOf {
    Real cosChi, cosSide;
  };
  using Position = PositionOf<double>;

  template <class Real>
  struct ImageOf {
    PositionOf<Real> at;
    Real sinPhi, cosPhi;
    bool exists;  ///< on the cylinder
  };

  /// A point at an end of the cylinder becomes NaN in both coordinates.
  template <class Math>
  GEOMATH_INLINE ImageOf<typename Math::Real> Forward(typename Math::Real& b,
                                                      typename Math::Real& l) const {
    using Real = typename Math::Real;
    Real sinPhi, cosPhi, sinLambda, cosLambda;
    Math::SinCos(b, sinPhi, cosPhi);
    Math::SinCos(sphere.alpha * FoldTurn(l - lambda0), sinLambda, cosLambda);
    const auto [sinChi, cosChi] = sphere.Latitude<Math>(sinPhi, cosPhi);
    const Real B = cosChi * sinLambda, meridian = cosChi * cosLambda;  // 8-5
    const bool exists = Math::Abs(B) < 1;

    const Real x = R * Artanh<Math>(B);                         // 8-1
    const Real y = R * (Math::Atan2(sinChi, meridian) - chi0);  // 8-3
    constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
    b = exists ? fNorth + y * cosTheta - x * sinTheta : kNowhere;
    l = exists ? fEast + y * sinTheta + x * cosTheta : kNowhere;
    const Real cosSide = Math::Sqrt(sinChi * sinChi + meridian * meridian);
    return {{cosChi, cosSide}, sinPhi, cosPhi, exists};
  }

  template <class Math>
  GEOMATH_INLINE Position Inverse(double& n, double& e) const {
    const auto [x, D] = OnSphere(n, e);
    double sinD, cosD;
    Math::SinCos(D, sinD, cosD);
    const auto [sinSide, cosSide] = Gudermannian<Math>(x);

    const double sinChi = cosSide * sinD, meridian = cosSide * cosD;  // 8-6
    const double cosChi = std::sqrt(sinSide * sinSide + meridian * meridian);
    n = sphere.Geodetic<Math>({sinChi, cosChi});
    e = lambda0 + Math::Atan2(sinSide, meridian) / sphere.alpha;  // 8-7
    return {cosChi, cosSide};
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < kHalfPi;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return sphere.ServesColumns() && latitude && longitude;
  }

  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    const auto [x, D] = OnSphere(n, e);
    return sphere.ServesColumns() && std::isfinite(x) && std::abs(D) < simd::kMaxAngle;
  }

 private:
  struct Plane {
    double x, D;
  };

  // x/R and the D of a grid position.
  GEOMATH_INLINE Plane OnSphere(double n, double e) const {
    const double dN = n - fNorth, dE = e - fEast;
    const double x = dE * cosTheta - dN * sinTheta, y = dN * cosTheta + dE * sinTheta;
    return {x / R, y / R + chi0};  // 8-8
  }

  // Without loss near 0.
  template <class Math>
  static GEOMATH_INLINE typename Math::Real Artanh(typename Math::Real B) {
    using Real = typename Math::Real;
    const Real size = Math::Abs(B);
    return Math::CopySign(Math::Log1p(2 * size / (1 - size)) / 2, B);
  }
};

}  // namespace zel_cs::geomath
