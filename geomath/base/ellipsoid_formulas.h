#pragma once

#include <cmath>
#include <cstddef>

#include "geomath/base/ellipsoid.h"
#include "geomath/simd/elementary.h"

/// Geodetic and geocentric coordinates for one point, written in the functions of `Math`: the
/// single-point calls and the column kernels are both made of these.
namespace zel_cs::geomath {

inline constexpr double kAxisDistance = 1e-10;  // metres; nearer points lie on the polar axis

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
    const double invLength = 1 / std::sqrt(s * s + c * c);
    return {s * invLength, c * invLength};
  }
};

/// The equation of the reduced latitude, tan β = (z + E·sin β)/p with E = a·e², where p is the
/// distance of a point from the axis and z that from the equator times b/a, both not negative
/// (Bowring 1976, eq. 3, written for β; Fukushima 2006, eq. 7).
struct ReducedLatitudeEquation {
  double p, z, E;

  /// Newton's step from a pair of length 1 to one of any length. The equation is convex in tan β, so
  /// that steps from above the root descend to it without passing it, wherever the point lies. On
  /// the evolute, where the root is double, the cosine falls to 0.
  GEOMATH_INLINE ReducedLatitude Step(const ReducedLatitude& beta) const {
    return {z + E * (beta.s * beta.s * beta.s), p - E * (beta.c * beta.c * beta.c)};
  }

  /// A start above the root: one fixed-point step from sin β = 1.
  GEOMATH_INLINE ReducedLatitude StartAbove() const {
    const double s = ReducedLatitude{z + E, p}.Unit().s;
    return ReducedLatitude{z + E * s, p}.Unit();
  }

  /// Bowring's value (1976, eq. 4): a step from the β that the point would have on the surface,
  /// tan β = z/(p·(1 − e²)), whose pair has the length A.
  GEOMATH_INLINE ReducedLatitude StepFromSurface(double e2) const {
    const double S = z, C = p * (1 - e2);
    const double A = std::sqrt(S * S + C * C), A3 = A * A * A;
    return {z * A3 + E * (S * S * S), p * A3 - E * (C * C * C)};
  }
};

/// In place, (X, Y, Z) to (B, L, H).
struct XyzToBlh {
  static constexpr std::size_t kColumns = 3;
  double a, e2;
  double E, axesRatio;          // a·e² and b/a
  double minSquare, maxSquare;  // of the distances from the centre that the columns serve

  explicit XyzToBlh(const Ellipsoid& ell)
      : a(ell.a), e2(ell.e2), E(ell.a * ell.e2), axesRatio(1 - ell.f) {
    const double lowest = a / 2, highest = IsOfEarth(ell) ? 1e6 * a : 0;
    minSquare = lowest * lowest;
    maxSquare = highest * highest;
  }

  /// Flat ellipsoids need more than two steps; eighth powers of distances must not overflow.
  static bool IsOfEarth(const Ellipsoid& ell) {
    return ell.a > 1 && ell.a < 1e30 && ell.e2 >= 0 && ell.e2 < 0.0075;
  }

  GEOMATH_INLINE bool Serves(double X, double Y, double Z) const {
    const double square = X * X + Y * Y + Z * Z;
    const bool outside = square > minSquare, near = square < maxSquare;
    return outside & near;
  }

  GEOMATH_INLINE static double AxisDistance(double X, double Y) { return std::sqrt(X * X + Y * Y); }
  GEOMATH_INLINE ReducedLatitudeEquation Equation(double p, double Z) const {
    return {p, axesRatio * std::abs(Z), E};
  }

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z) const {
    const double p = AxisDistance(X, Y);
    const ReducedLatitudeEquation equation = Equation(p, Z);
    const ReducedLatitude beta = equation.StepFromSurface(e2).Unit();
    FromReduced<Math>(p, equation.Step(beta), X, Y, Z);
  }

  /// The rest of the conversion, from the axis distance and the reduced latitude. The height is the
  /// projection of the point onto the normal less that of the foot point, which is stationary in
  /// the latitude: no digits are lost near the poles. On the equator's plane B = 0 and H = p − a.
  template <class Math>
  GEOMATH_INLINE void FromReduced(double p, const ReducedLatitude& beta, double& X, double& Y,
                                  double& Z) const {
    const double z = std::abs(Z);
    const ReducedLatitude normal = {beta.s, axesRatio * beta.c};  // tan φ = tan β/(1 − f)
    const auto [s, c] = normal.Unit();
    const double foot = std::sqrt((1 - e2) * s * s + c * c);
    const double latitude = std::copysign(Math::Atan2(normal.s, normal.c), Z);
    const double height = p * c + z * s - a * foot;
    const double lambda = Math::Atan2(Y, X);
    X = z == 0 ? 0.0 : latitude;
    Y = p < kAxisDistance ? 0.0 : lambda;
    Z = z == 0 ? p - a : height;
  }
};

}  // namespace zel_cs::geomath
