#pragma once

#include <array>
#include <cstddef>

#include "geomath/simd/kernel.h"

/// Interpolation rules on plain numbers. Which nodes they are given is the caller's affair.
namespace zel_cs::geomath {

/// The parabola through a, b, c at −step, 0, +step, at offset d. The second difference is formed in
/// the arithmetic of the nodes: single precision for floats, integers for shorts.
template <class Value>
GEOMATH_INLINE double ThreePoint(double step, double d, Value a, Value b, Value c) {
  const auto second = c + a - 2 * b;
  return (second * d / step + c - a) * (d * 0.5 / step) + b;
}

/// z00 at (0, 0), z01 at (0, 1), z10 at (1, 0), z11 at (1, 1), evaluated at (u, v).
GEOMATH_INLINE double Bilinear(double u, double v, double z00, double z01, double z10, double z11) {
  return (1 - u) * (1 - v) * z00 + (1 - u) * v * z01 + u * (1 - v) * z10 + u * v * z11;
}

/// The same surface from differences, which are formed in single precision.
GEOMATH_INLINE double BilinearByDifferences(double u, double v, float z00, float z01, float z10,
                                            float z11) {
  const float west = z10 - z00, south = z01 - z00, east = z11 - z01;
  return z00 + south * v + east * u * v + west * u * (1 - v);
}

using Weights4 = std::array<double, 4>;

/// Cubic convolution with parameter −1/2 (Keys 1981, eq. 15): the weights of the nodes at −1, 0, 1
/// and 2 for a point at t. Reproduces parabolas.
GEOMATH_INLINE Weights4 CatmullRom(double t) {
  return {(t - 0.5 - 0.5 * t * t) * t, (1.5 * t - 2.5) * t * t + 1, ((2 - 1.5 * t) * t + 0.5) * t,
          0.5 * t * t * (t - 1)};
}

/// Lagrange's weights of the nodes at x[0 … 3] for a point at `at`. Reproduces cubics.
GEOMATH_INLINE Weights4 Lagrange(double at, const std::array<double, 4>& x) {
  Weights4 weights;
  for (std::size_t k = 0; k < 4; ++k) {
    weights[k] = 1;
    for (std::size_t other = 0; other < 4; ++other)
      if (other != k) weights[k] *= (at - x[other]) / (x[k] - x[other]);
  }
  return weights;
}

/// The natural cubic spline through y at 0, 1, 2, 3 (de Boor 1978, chapter IV): the coefficients of
/// 1, t, t², t³ on its interval from node `piece` (0, 1 or 2), t counted from that node.
GEOMATH_INLINE std::array<double, 4> NaturalSplinePiece(const std::array<double, 4>& y,
                                                        double piece) {
  const double d1 = y[0] - 2 * y[1] + y[2], d2 = y[1] - 2 * y[2] + y[3];
  const double M1 = (8 * d1 - 2 * d2) / 5, M2 = (8 * d2 - 2 * d1) / 5;  // second derivatives
  const bool first = piece<1, last = piece> 1;
  const double low = first ? 0 : last ? M2 : M1, high = first ? M1 : last ? 0 : M2;
  const double from = first ? y[0] : last ? y[2] : y[1], to = first ? y[1] : last ? y[3] : y[2];
  return {from, to - from - low / 3 - high / 6, low / 2, (high - low) / 6};
}

/// The slopes of CatmullRom.
GEOMATH_INLINE Weights4 CatmullRomSlopes(double t) {
  return {(2 - 1.5 * t) * t - 0.5, (4.5 * t - 5) * t, (4 - 4.5 * t) * t + 0.5, (1.5 * t - 1) * t};
}

/// The slopes of Lagrange with nodes at x[0] and `step`s from there.
GEOMATH_INLINE Weights4 LagrangeSlopes(double at, const std::array<double, 4>& x, double step) {
  const double q = 1 / (6 * step * step * step);
  const double d0 = at - x[0], d1 = at - x[1], d2 = at - x[2], d3 = at - x[3];
  return {-q * (d1 * d2 + (d1 + d2) * d3), 3 * q * (d0 * d2 + (d0 + d2) * d3),
          -3 * q * (d0 * d1 + (d0 + d1) * d3), q * (d0 * d1 + (d0 + d1) * d2)};
}

/// Number of nodes in one row of the spline below.
inline constexpr std::size_t kSplineNodes = 6;

/// The natural cubic spline through six equidistant values, evaluated at `fraction` past node
/// `node` (0 to 4). In single precision throughout; the sweep is that of the tridiagonal system
/// of second derivatives.
GEOMATH_INLINE float NaturalSpline6(const std::array<float, kSplineNodes>& y, std::size_t node,
                                    float fraction) {
  std::array<float, kSplineNodes> q{}, r{};
  for (std::size_t k = 1; k + 1 < kSplineNodes; ++k) {
    const float p = 0.5F * q[k - 1] + 2.0F;
    q[k] = -0.5F / p;
    r[k] = (3.0F * (y[k + 1] - 2.0F * y[k] + y[k - 1]) - 0.5F * r[k - 1]) / p;
  }
  for (std::size_t k = kSplineNodes - 2; k > 0; --k) r[k] = q[k] * r[k + 1] + r[k];
  const float y0 = y[node], y1 = y[node + 1], r0 = r[node], r1 = r[node + 1], f = fraction;
  return (((r1 - r0) * f / 6.0F + r0 / 2.0F) * f + (y1 - y0 - r0 / 3.0F - r1 / 6.0F)) * f + y0;
}

/// A polynomial of the third degree.
struct Cubic {
  double c0, c1, c2, c3;
  GEOMATH_INLINE double At(double t) const { return ((c3 * t + c2) * t + c1) * t + c0; }
  GEOMATH_INLINE double SlopeAt(double t) const { return (3 * c3 * t + 2 * c2) * t + c1; }
};

/// The piece behind the third value of the same spline in double precision.
GEOMATH_INLINE Cubic NaturalSpline6MiddlePiece(const std::array<double, kSplineNodes>& y) {
  std::array<double, kSplineNodes> q{}, r{};
  for (std::size_t k = 1; k + 1 < kSplineNodes; ++k) {
    const double perPivot = 1 / (0.5 * q[k - 1] + 2);
    q[k] = -0.5 * perPivot;
    r[k] = (3 * (y[k + 1] - 2 * y[k] + y[k - 1]) - 0.5 * r[k - 1]) * perPivot;
  }
  for (std::size_t k = kSplineNodes - 2; k > 1; --k) r[k] = q[k] * r[k + 1] + r[k];
  constexpr double kThird = 1.0 / 3, kSixth = 1.0 / 6;
  return {y[2], y[3] - y[2] - r[2] * kThird - r[3] * kSixth, r[2] / 2, (r[3] - r[2]) * kSixth};
}

}  // namespace zel_cs::geomath
