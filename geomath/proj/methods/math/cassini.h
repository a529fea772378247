#pragma once

#include <cmath>

#include "geomath/base/ellipsoid.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/meridian_series.h"
#include "geomath/simd/latitude_dual.h"

namespace zel_cs::geomath {

/// Cassini-Soldner on plain numbers (EPSG Guidance Note 7-2, method 9806; Snyder 1987, p. 95),
/// metres from the origin, without false coordinates, on axes that are turned: the projection's
/// north axis points in grid azimuth `axisAzimuth`, the sense of the general oblique Mercator. At
/// azimuth 0 it is the plain projection.
///
/// Both directions are truncated series: a round trip closes to 0.2 mm within 1° of the central
/// meridian, 3.3 mm within 2° and 18 mm within 3°, at the worst latitude. Nothing fails; at the
/// poles results are not finite. Radians.
///
/// Symbols of method 9806, its x and y being the plane's east and north before they are turned:
///   A Δλ·cos φ   T tan²φ   C e′²·cos²φ   ν nu   ρ rho   M0 m0_   D x/ν1   index 1: at the footpoint
class CassiniSoldner {
 public:
  struct Geographic {
    double phi, lambda;
  };
  template <class Real>
  struct PlaneOf {
    Real north, east;
  };
  using Plane = PlaneOf<double>;

  CassiniSoldner(const Ellipsoid& ell, double lat0, double lon0, double axisAzimuth);

  /// The longitude difference is folded into [−π, π].
  template <class Math = simd::Scalar>
  GEOMATH_INLINE PlaneOf<typename Math::Real> Forward(typename Math::Real phi,
                                                      typename Math::Real lambda) const {
    using Real = typename Math::Real;
    using Latitude = simd::LatitudeMath<Math>;
    using OfLatitude = typename Latitude::Real;
    const OfLatitude b = Latitude::Of(phi);
    OfLatitude s, c;
    Latitude::SinCos(b, s, c);
    const OfLatitude t = s / c;
    const Real A = FoldTurn(lambda - lambda0_) * c, A2 = A * A;
    const OfLatitude T = t * t, C = ep2_ * (c * c);
    const OfLatitude nu = a_ / Latitude::Sqrt(1 - e2_ * (s * s));
    const Real x = nu * A * (1 - T * A2 * (1.0 / 6 + (8 - T + 8 * C) * A2 / 120));
    const Real y =
        meridian_.Arc(b, s, c) - m0_ + nu * t * A2 * (1.0 / 2 + (5 - T + 6 * C) * A2 / 24);
    return {y * cosTheta_ - x * sinTheta_, y * sinTheta_ + x * cosTheta_};
  }

  /// The longitude is not folded.
  template <class Math = simd::Scalar>
  GEOMATH_INLINE Geographic Inverse(double north, double east) const {
    const double x = east * cosTheta_ - north * sinTheta_;
    const double phi1 = meridian_.footpoint.Evaluate<Math>(Rectifying(north, east));
    double s, c;
    Math::SinCos(phi1, s, c);
    const double t = s / c;
    const double T1 = t * t, w2 = 1 - e2_ * (s * s);
    const double D = x * std::sqrt(w2) / a_, D2 = D * D;
    const double nuOverRho = w2 / (1 - e2_);
    const double phi = phi1 - nuOverRho * t * D2 * (1.0 / 2 - (1 + 3 * T1) * D2 / 24);
    const double lambda = lambda0_ + D * (1 - T1 * D2 * (1.0 / 3 - (1 + 3 * T1) * D2 / 15)) / c;
    return {phi, lambda};
  }

  /// Rectifying latitude of the footpoint of a plane position, radians.
  GEOMATH_INLINE double Rectifying(double north, double east) const {
    return (m0_ + (north * cosTheta_ + east * sinTheta_)) / meridian_.r;
  }

  GEOMATH_INLINE double OriginLongitude() const { return lambda0_; }

 private:
  double a_, e2_, ep2_, lambda0_;
  MeridianSeries meridian_;
  double m0_;                   // meridian arc of the origin, metres
  double sinTheta_, cosTheta_;  // of the axis azimuth
};

}  // namespace zel_cs::geomath
