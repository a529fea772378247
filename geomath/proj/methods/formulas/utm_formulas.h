#pragma once

#include <cmath>

#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/meridian_series.h"
#include "geomath/proj/methods/math/multiple_angles.h"
#include "geomath/proj/methods/math/tm_longitude_series.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// TUTMProj with its constants prepared. Symbols of Stem 1989:
///   S0 forwardOrigin, inverseOrigin   r·k0 rK0   L = Δλ·cos φ   R = scaled prime-vertical radius
struct UtmFormulas {
  static constexpr double kEta2T4 = 60;  // Kept: Stem 1989 has 90; see TmInverseSeries

  double lambda0, fEast, fNorth;
  double e2, ep2;
  double aK0;   // scaled semi-major axis, metres
  double rK0;   // scaled rectifying radius, metres
  double u[3];  // arc coefficients of sin 2φ … sin 6φ
  CosinePowerSeries footpoint;
  double forwardOrigin;  // arc of φ0 as the forward direction counts it, metres
  double inverseOrigin;  // as the inverse direction counts it, sin 8φ included

  /// The latitude terms and the reduced longitude difference L, from which the factors follow.
  template <class Real>
  struct PositionOf {
    TmLatitudeOf<Real> at;
    Real L;
  };

  /// Kept: the forward arc ends at sin 6φ, for the point and for the origin.
  template <class Real>
  GEOMATH_INLINE Real ForwardArc(Real phi, Real sinPhi, Real cosPhi) const {
    const Real sin2 = 2 * sinPhi * cosPhi, cos2 = 1 - 2 * sinPhi * sinPhi;
    return rK0 * (phi + ClenshawSin(u, sin2, cos2));
  }

  template <class Math>
  GEOMATH_INLINE PositionOf<typename Math::Real> Forward(typename Math::Real& b,
                                                         typename Math::Real& l) const {
    using Real = typename Math::Real;
    Real s, c;
    Math::SinCos(b, s, c);
    const TmLatitudeOf<Real> at(s, c, ep2);
    const Real L = FoldTurn(l - lambda0) * c;
    const Real R = aK0 / Math::Sqrt(1 - e2 * (s * s));
    const TmOffset<Real> offset = TmForwardSeries(at, L);
    b = ForwardArc(b, s, c) - forwardOrigin + fNorth + R * offset.north;
    l = fEast + R * offset.east;
    return {at, L};
  }

  /// The footpoint, and what takes it to the point.
  struct FootpointOf {
    double sinPhi, cosPhi;
    TmFootpointStep step;
  };

  template <class Math>
  GEOMATH_INLINE FootpointOf Inverse(double& n, double& e) const {
    const double phiF = footpoint.Evaluate<Math>((n - fNorth + inverseOrigin) / rK0);
    double s, c;
    Math::SinCos(phiF, s, c);
    const double Q = (e - fEast) * std::sqrt(1 - e2 * (s * s)) / aK0;
    const TmFootpointStep step = TmInverseSeries(TmLatitude(s, c, ep2), Q, kEta2T4);
    n = phiF + step.latitude;
    e = lambda0 + step.longitude / c;
    return {s, c, step};
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < simd::kMaxAngle;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return latitude & longitude;
  }
  GEOMATH_INLINE bool ServesInverse(double n, double) const {
    return std::abs((n - fNorth + inverseOrigin) / rK0) < simd::kMaxAngle;
  }
};

}  // namespace zel_cs::geomath
