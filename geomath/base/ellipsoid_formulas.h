#pragma once

#include <cmath>
#include <cstddef>

#include "geomath/base/ellipsoid.h"
#include "geomath/simd/elementary.h"

/// Geodetic and geocentric coordinates for one point, written in the functions of `Math`: the
/// single-point calls and the column kernels are both made of these.
namespace zel_cs::geomath {

inline constexpr double kAxisDistance = 1e-10;  // metres; nearer points lie on the polar axis
inline constexpr double kMaxEarthE2 = 0.0075;   // of an Earth ellipsoid

/// In place, (B, L, H) to (X, Y, Z).
struct BlhToXyz {
  static constexpr std::size_t kColumns = 3;
  double a, e2;

  explicit BlhToXyz(const Ellipsoid& ell) : a(ell.a), e2(ell.e2) {}

  template <class Math>
  GEOMATH_INLINE void Convert(double& B, double& L, double& H) const {
    double sinB, cosB, sinL, cosL;
    Math::SinCos(B, sinB, cosB);
    Math::SinCos(L, sinL, cosL);
    const double N = a / std::sqrt(1 - e2 * sinB * sinB);
    const double h = H;
    B = (N + h) * cosB * cosL;
    L = (N + h) * cosB * sinL;
    H = (N + h - e2 * N) * sinB;
  }

  GEOMATH_INLINE bool Serves(double B, double L, double) const {
    const bool latitude = std::abs(B) < simd::kMaxAngle;
    const bool longitude = std::abs(L) < simd::kMaxAngle;
    return latitude & longitude;
  }
};

/// Reduced latitude β from 0 to π/2 by its sine and cosine times one positive number, so that the
/// axis needs no division.
struct ReducedLatitude {
  double s, c;

  /// The pair of length 1.
  GEOMATH_INLINE ReducedLatitude Unit() const {
    const double length = std::sqrt(s * s + c * c);
    return {s / length, c / length};
  }
};

/// The equation of the reduced latitude, tan β = (z + e²·sin β)/p, with p the distance from the axis
/// in units of a and z that from the equator in units of a²/b, both not negative (Bowring 1976, eq.
/// 3, written for β; Fukushima 2006, eq. 7).
struct ReducedLatitudeEquation {
  double p, z, e2;

  /// Newton's tangent from a pair of length 1. The equation is convex in tan β, so that steps from
  /// above the root descend to it without passing it, wherever the point lies. The tangent is
  /// Numerator/Denominator; on the evolute, where the root is double, the denominator falls to 0.
  GEOMATH_INLINE double Numerator(const ReducedLatitude& beta) const {
    return z + e2 * (beta.s * beta.s * beta.s);
  }
  GEOMATH_INLINE double Denominator(const ReducedLatitude& beta) const {
    return p - e2 * (beta.c * beta.c * beta.c);
  }
  /// A start above the root: one fixed-point step from sin β = 1.
  GEOMATH_INLINE ReducedLatitude StartAbove() const {
    const double s = ReducedLatitude{z + e2, p}.Unit().s;
    return ReducedLatitude{z + e2 * s, p}.Unit();
  }

  /// The root by one step of Halley's method (Fukushima 2006: one root, no division) from a start
  /// that is exact to order e⁴·h/a at height h: a fixed-point step from the β of the surface below.
  /// Both pairs are of any length. The cosine of the start is p·q; the step is divided by p, which
  /// all its terms contain, so that it holds on the axis.
  GEOMATH_INLINE ReducedLatitude NearSurface() const {
    const double zSurface = z * (1 / (1 - e2));  // tan β = zSurface/p there
    const double q = std::sqrt(p * p + zSurface * zSurface);
    const double S = z * q + e2 * zSurface, C = p * q;
    const double A = std::sqrt(S * S + C * C), A3 = A * A * A;
    const double D = z * A3 + e2 * (S * S * S);
    const double FOverP = A3 - e2 * (C * C * q);
    const double BOverP = 3.0 / 2 * e2 * (S * (C * q)) * ((p * S - z * C) * A - e2 * (S * C));
    return {D * FOverP - BOverP * S, p * FOverP * FOverP - BOverP * C};
  }
};

/// In place, (X, Y, Z) to (B, L, H).
struct XyzToBlh {
  static constexpr std::size_t kColumns = 3;
  double a, e2;
  double axesRatio;         // b/a
  double invA, ratioOverA;  // of the equation's units
  double lowest, highest;   // between these distances from the centre the columns serve, metres

  explicit XyzToBlh(const Ellipsoid& ell)
      : a(ell.a),
        e2(ell.e2),
        axesRatio(1 - ell.f),
        invA(1 / ell.a),
        ratioOverA((1 - ell.f) / ell.a),
        lowest(ell.a / 2),
        highest(IsOfEarth(ell) ? 1e6 * ell.a : 0) {}

  /// Flat ellipsoids need more than one step from the start near the surface.
  static bool IsOfEarth(const Ellipsoid& ell) {
    return ell.a > 0 && ell.e2 >= 0 && ell.e2 < kMaxEarthE2;
  }

  GEOMATH_INLINE static double AxisDistance(double X, double Y) { return std::sqrt(X * X + Y * Y); }
  GEOMATH_INLINE ReducedLatitudeEquation Equation(double p, double Z) const {
    return {p * invA, std::abs(Z) * ratioOverA, e2};
  }

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z) const {
    const double p = AxisDistance(X, Y);
    FromReduced<Math>(p, Equation(p, Z).NearSurface(), X, Y, Z);
  }

  /// The rest of the conversion, from the axis distance and the reduced latitude. The height is the
  /// projection of the point onto the normal less that of the foot point, which is stationary in
  /// the latitude: no digits are lost near the poles. On the equator's plane B = 0 and H = p − a.
  template <class Math>
  GEOMATH_INLINE void FromReduced(double p, const ReducedLatitude& beta, double& X, double& Y,
                                  double& Z) const {
    const double z = std::abs(Z);
    const double s = beta.s, c = axesRatio * beta.c;  // tan φ = tan β/(1 − f)
    const double s2 = s * s, c2 = c * c;
    const double length = std::sqrt(s2 + c2);
    const double foot = std::sqrt((1 - e2) * s2 + c2);
    const double latitude = std::copysign(Math::Atan2(s, c), Z);
    const double height = (p * c + z * s - a * foot) / length;
    const double lambda = Math::Atan2(Y, X);
    X = z == 0 ? 0.0 : latitude;
    Y = p < kAxisDistance ? 0.0 : lambda;
    Z = z == 0 ? p - a : height;
  }

  GEOMATH_INLINE bool Serves(double X, double Y, double Z) const {
    const double r2 = X * X + Y * Y + Z * Z;
    const bool outside = r2 > lowest * lowest, near = r2 < highest * highest;
    return outside & near;
  }
};

}  // namespace zel_cs::geomath
