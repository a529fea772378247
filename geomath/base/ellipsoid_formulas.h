#pragma once

#include <cmath>

#include "geomath/base/ellipsoid.h"
#include "geomath/simd/elementary.h"

/// Geodetic and geocentric coordinates for one point, written in the functions of `Math`: the
/// single-point calls and the column kernels are both made of these.
namespace zel_cs::geomath {

inline constexpr double kAxisDistance = 1e-10;  // metres; nearer points lie on the polar axis

/// In place, (B, L, H) to (X, Y, Z).
template <class Math>
GEOMATH_INLINE void GeodeticToGeocentric(const Ellipsoid& ell, double& B, double& L, double& H) {
  double sinB, cosB, sinL, cosL;
  Math::SinCos(B, sinB, cosB);
  Math::SinCos(L, sinL, cosL);
  const double N = ell.a / std::sqrt(1 - ell.e2 * sinB * sinB);
  const double h = H;
  B = (N + h) * cosB * cosL;
  L = (N + h) * cosB * sinL;
  H = (N + h - ell.e2 * N) * sinB;
}

/// Reduced latitude β from 0 to π/2 as the pair (sin β, cos β), so that the axis needs no division.
struct ReducedLatitude {
  double s, c;
};

GEOMATH_INLINE ReducedLatitude UnitPair(double s, double c) {
  const double length = std::sqrt(s * s + c * c);
  return {s / length, c / length};
}

/// The equation of the reduced latitude, tan β = (z + e²·sin β)/p, with p the distance from the axis
/// in units of a and z that from the equator in units of a²/b, both not negative (Bowring 1976, eq.
/// 3, written for β; Fukushima 2006, eq. 7).
///
/// It is convex in tan β, so that Newton steps from above the root descend to it without passing it,
/// wherever the point lies. One fixed-point step from sin β = 1 gives such a start, which near the
/// surface is already exact to order e⁴.
struct ReducedLatitudeEquation {
  double p, z, e2;

  GEOMATH_INLINE ReducedLatitude Start() const {
    return UnitPair(z + e2 * UnitPair(z + e2, p).s, p);
  }
  /// The tangent of the next value is Numerator/Denominator; on the evolute, where the root is
  /// double, the denominator falls to 0.
  GEOMATH_INLINE double Numerator(const ReducedLatitude& beta) const {
    return z + e2 * (beta.s * beta.s * beta.s);
  }
  GEOMATH_INLINE double Denominator(const ReducedLatitude& beta) const {
    return p - e2 * (beta.c * beta.c * beta.c);
  }
};

/// Of a geocentric point: its distance from the axis, metres, and the equation of its latitude.
GEOMATH_INLINE double AxisDistance(double X, double Y) { return std::sqrt(X * X + Y * Y); }
GEOMATH_INLINE ReducedLatitudeEquation LatitudeEquation(const Ellipsoid& ell, double p, double Z) {
  return {p / ell.a, (1 - ell.f) * std::abs(Z) / ell.a, ell.e2};
}

/// In place, (X, Y, Z) to (B, L, H) by the reduced latitude of the point. The height is the
/// projection of the point onto the normal less that of the foot point, which is stationary in the
/// latitude: no digits are lost near the poles. On the equator's plane B = 0 and H = p − a.
template <class Math>
GEOMATH_INLINE void GeodeticFromReduced(const Ellipsoid& ell, double p, const ReducedLatitude& beta,
                                        double& X, double& Y, double& Z) {
  const double z = std::abs(Z);
  const ReducedLatitude phi = UnitPair(beta.s, (1 - ell.f) * beta.c);  // tan φ = tan β/(1 − f)
  const double foot = std::sqrt((1 - ell.e2) * phi.s * phi.s + phi.c * phi.c);
  const double latitude = std::copysign(Math::Atan2(phi.s, phi.c), Z);
  const double height = p * phi.c + z * phi.s - ell.a * foot;
  const double lambda = Math::Atan2(Y, X);
  X = z == 0 ? 0.0 : latitude;
  Y = p < kAxisDistance ? 0.0 : lambda;
  Z = z == 0 ? p - ell.a : height;
}

}  // namespace zel_cs::geomath
