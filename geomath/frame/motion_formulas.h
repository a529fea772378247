#pragma once

#include <cmath>
#include <cstddef>

#include "geomath/base/tangent_formulas.h"
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

/// The derivatives of a motion X + t·v(B, L) by X, Y, Z, where v = n·N + e·E + u·U has slopes along B
/// and L: with ∂N/∂B = −U, ∂U/∂B = N, ∂N/∂L = −sin B·E, ∂U/∂L = cos B·E and
/// ∂E/∂L = sin B·N − cos B·U, and the gradients N/(M + h) of B and E/((ν + h)·cos B) of L.
/// Columns: B, L, h, n, e, u, t, and nine that hold the slopes along B of n, e and u, those along L,
/// and three more; they become the derivatives, row by row.
struct LocalMotionSlopes {
  static constexpr std::size_t kColumns = 16;
  double a, e2;

  template <class Math>
  GEOMATH_INLINE void Convert(double& B, double& L, double& h, double& n, double& e, double& u,
                              double& t, double& j0, double& j1, double& j2, double& j3, double& j4,
                              double& j5, double& j6, double& j7, double& j8) const {
    const TangentFrame frame = TangentFrame::At<Math>(a, e2, B, L, h);
    const double cosB = frame.axes.m[2][0], sinB = frame.axes.m[2][2];
    const double alongB = t / frame.perLatitude, alongL = t / frame.perLongitude;
    const Matrix3 inAxes = {{{(j0 + u) * alongB, (j3 + e * sinB) * alongL, 0},
                             {j1 * alongB, (j4 - n * sinB + u * cosB) * alongL, 0},
                             {(j2 - n) * alongB, (j5 - e * cosB) * alongL, 0}}};
    Matrix3 found = frame.axes * (inAxes * frame.axes.Transposed());
    for (int i = 0; i < 3; ++i) found.m[i][i] += 1;
    found.To(j0, j1, j2, j3, j4, j5, j6, j7, j8);
  }
  template <class... Others>
  GEOMATH_INLINE bool Serves(double B, double L, Others...) const {
    return TangentFrame::ServesColumns(B, L);
  }
};

/// The same of a vector that is given along X, Y, Z; columns 4 to 6 are not read.
struct SpaceMotionSlopes {
  static constexpr std::size_t kColumns = 16;
  double a, e2;

  template <class Math>
  GEOMATH_INLINE void Convert(double& B, double& L, double& h, double&, double&, double&, double& t,
                              double& j0, double& j1, double& j2, double& j3, double& j4,
                              double& j5, double& j6, double& j7, double& j8) const {
    const TangentFrame frame = TangentFrame::At<Math>(a, e2, B, L, h);
    const double alongB = t / frame.perLatitude, alongL = t / frame.perLongitude;
    const Matrix3 slopes = {{{j0 * alongB, j3 * alongL, 0},
                             {j1 * alongB, j4 * alongL, 0},
                             {j2 * alongB, j5 * alongL, 0}}};
    Matrix3 found = slopes * frame.axes.Transposed();
    for (int i = 0; i < 3; ++i) found.m[i][i] += 1;
    found.To(j0, j1, j2, j3, j4, j5, j6, j7, j8);
  }
  template <class... Others>
  GEOMATH_INLINE bool Serves(double B, double L, Others...) const {
    return TangentFrame::ServesColumns(B, L);
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

/// EllipsoidalMotion as angles, which are not added, with their derivatives: from B and from n and e
/// with their slopes along B and L and their mixed derivatives. Those are dB and dL afterwards, and B
/// is the growth g of 1/(ν·cos B) along B, of itself; the slopes of the radii are left out of the mixed
/// ones. At the pole dL and g are 0.
struct EllipsoidalMotionSlopes {
  static constexpr std::size_t kColumns = 9;
  double a, e2;

  template <class Math>
  GEOMATH_INLINE void Convert(double& B, double& n, double& e, double& nB, double& nL, double& eB,
                              double& eL, double& nBL, double& eBL) const {
    constexpr double kPole = 1e-12;  // cos B
    double sinB, cosB;
    Math::SinCos(B, sinB, cosB);
    const double W2 = 1 - e2 * sinB * sinB, W = std::sqrt(W2);
    const bool atPole = std::abs(cosB) < kPole;
    const double c = atPole ? 1 : cosB;
    const double perNorth = W2 * W / (a * (1 - e2)), perEast = atPole ? 0 : W / (a * c);
    const double growsNorth = -3 * e2 * sinB * cosB / W2;  // of perNorth along B, of itself
    const double growsEast = atPole ? 0 : sinB * (1 / c - e2 * c / W2);
    nB = (nB + n * growsNorth) * perNorth;
    eB = (eB + e * growsEast) * perEast;
    n *= perNorth;
    nL *= perNorth;
    nBL *= perNorth;
    e *= perEast;
    eL *= perEast;
    eBL *= perEast;
    B = growsEast;
  }
};

}  // namespace zel_cs::geomath
