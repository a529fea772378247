#pragma once

#include <cmath>
#include <cstddef>

#include "geomath/simd/kernel.h"

/// Motions that are given to the north, east and up, applied to one point; the kernels of columns are
/// made of these statements.
namespace zel_cs::geomath {

/// In place, X, Y, Z of a point at the latitude B, moved by `factor` times the vector
/// n·N + e·E + u·U, where with the longitude L of the point
///     N = (−sin B cos L, −sin B sin L, cos B),  E = (−sin L, cos L, 0),
///     U = (cos B cos L, cos B sin L, sin B).
/// On the axis, L is 0. The last five columns are spent.
struct LocalMotion {
  static constexpr std::size_t kColumns = 8;

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z, double& B, double& n, double& e,
                              double& u, double& factor) const {
    constexpr double kAxis = 1e-9;  // metres
    double sinB, cosB;
    Math::SinCos(B, sinB, cosB);
    const double p = std::sqrt(X * X + Y * Y);
    const bool onAxis = p < kAxis;
    const double perP = 1 / (onAxis ? 1 : p);
    const double cosL = onAxis ? 1 : X * perP, sinL = onAxis ? 0 : Y * perP;
    const double outward = u * cosB - n * sinB;  // from the axis
    X += factor * (outward * cosL - e * sinL);
    Y += factor * (outward * sinL + e * cosL);
    Z += factor * (n * cosB + u * sinB);
  }
};

/// In place, a vector (x, y, z) at the latitude B and longitude L to its parts along N, E and U of
/// LocalMotion.
struct LocalParts {
  static constexpr std::size_t kColumns = 5;

  template <class Math>
  GEOMATH_INLINE void Convert(double& B, double& L, double& x, double& y, double& z) const {
    double sinB, cosB, sinL, cosL;
    Math::SinCos(B, sinB, cosB);
    Math::SinCos(L, sinL, cosL);
    const double outward = x * cosL + y * sinL, east = y * cosL - x * sinL, along = z;
    x = along * cosB - outward * sinB;
    y = east;
    z = along * sinB + outward * cosB;
  }
};

/// In place, B, L, H moved by lengths to the north, east and up along the surface of the ellipsoid:
///     dB = n/M,  dL = e/(N cos B),  dH = u,
/// with the radii of curvature of the meridian M = a(1 − e²)/W³ and the prime vertical N = a/W,
/// W² = 1 − e² sin² B. At the pole there is no east, and L stays.
struct EllipsoidalMotion {
  static constexpr std::size_t kColumns = 6;
  double a, e2;

  template <class Math>
  GEOMATH_INLINE void Convert(double& B, double& L, double& H, double& n, double& e,
                              double& u) const {
    constexpr double kPole = 1e-12;  // cos B
    double sinB, cosB;
    Math::SinCos(B, sinB, cosB);
    const double W2 = 1 - e2 * sinB * sinB, W = std::sqrt(W2);
    const bool atPole = std::abs(cosB) < kPole;
    const double dL = e * W / (a * (atPole ? 1 : cosB));
    B += n * W2 * W / (a * (1 - e2));
    L += atPole ? 0 : dL;
    H += u;
  }
};

}  // namespace zel_cs::geomath
