#pragma once

#include <cmath>

#include "geomath/simd/elementary.h"

namespace zel_cs::geomath::simd {

/// A number with its derivatives by two variables, for the exact derivatives of statements that are
/// templates on their functions (forward automatic differentiation: Griewank and Walther 2008,
/// chapter 3). A double stands for a constant. Comparisons are those of the values.
struct Dual {
  double value = 0, first = 0, second = 0;

  Dual() = default;
  GEOMATH_INLINE Dual(double constant) : value(constant) {}
  GEOMATH_INLINE Dual(double v, double d1, double d2) : value(v), first(d1), second(d2) {}

  /// f(x) from the value of f and its slope at x.
  GEOMATH_INLINE Dual Chain(double f, double slope) const {
    return {f, slope * first, slope * second};
  }

  GEOMATH_INLINE Dual operator-() const { return {-value, -first, -second}; }
  friend GEOMATH_INLINE Dual operator+(const Dual& x, const Dual& y) {
    return {x.value + y.value, x.first + y.first, x.second + y.second};
  }
  friend GEOMATH_INLINE Dual operator-(const Dual& x, const Dual& y) {
    return {x.value - y.value, x.first - y.first, x.second - y.second};
  }
  friend GEOMATH_INLINE Dual operator*(const Dual& x, const Dual& y) {
    return {x.value * y.value, x.first * y.value + x.value * y.first,
            x.second * y.value + x.value * y.second};
  }
  friend GEOMATH_INLINE Dual operator/(const Dual& x, const Dual& y) {
    const double q = x.value / y.value, r = 1 / y.value;
    return {q, (x.first - q * y.first) * r, (x.second - q * y.second) * r};
  }
  // With constants, whose derivatives the compiler may not leave out: 0·y is not 0 for every y.
  friend GEOMATH_INLINE Dual operator+(const Dual& x, double c) {
    return {x.value + c, x.first, x.second};
  }
  friend GEOMATH_INLINE Dual operator+(double c, const Dual& x) {
    return {c + x.value, x.first, x.second};
  }
  friend GEOMATH_INLINE Dual operator-(const Dual& x, double c) {
    return {x.value - c, x.first, x.second};
  }
  friend GEOMATH_INLINE Dual operator-(double c, const Dual& x) {
    return {c - x.value, -x.first, -x.second};
  }
  friend GEOMATH_INLINE Dual operator*(const Dual& x, double c) {
    return {x.value * c, x.first * c, x.second * c};
  }
  friend GEOMATH_INLINE Dual operator*(double c, const Dual& x) {
    return {c * x.value, c * x.first, c * x.second};
  }
  friend GEOMATH_INLINE Dual operator/(const Dual& x, double c) {
    const double r = 1 / c;
    return {x.value / c, x.first * r, x.second * r};
  }
  friend GEOMATH_INLINE Dual operator/(double c, const Dual& y) {
    const double q = c / y.value, slope = -q / y.value;
    return y.Chain(q, slope);
  }
  friend GEOMATH_INLINE Dual sqrt(const Dual& x) {
    const double root = std::sqrt(x.value);
    return x.Chain(root, 0.5 / root);
  }
  GEOMATH_INLINE Dual& operator+=(const Dual& y) { return *this = *this + y; }
  GEOMATH_INLINE Dual& operator-=(const Dual& y) { return *this = *this - y; }

  friend GEOMATH_INLINE bool operator<(const Dual& x, const Dual& y) { return x.value < y.value; }
  friend GEOMATH_INLINE bool operator>(const Dual& x, const Dual& y) { return x.value > y.value; }
  friend GEOMATH_INLINE bool operator<=(const Dual& x, const Dual& y) { return x.value <= y.value; }
  friend GEOMATH_INLINE bool operator>=(const Dual& x, const Dual& y) { return x.value >= y.value; }
  friend GEOMATH_INLINE bool operator==(const Dual& x, const Dual& y) { return x.value == y.value; }
};

/// The functions of `Base` on dual numbers. Statements take the forms that columns have, which follow
/// no iteration.
template <class Base>
struct DualMath {
  using Real = Dual;
  static constexpr bool kColumns = true;
  static GEOMATH_INLINE void SinCos(const Dual& x, Dual& sine, Dual& cosine) {
    double s, c;
    Base::SinCos(x.value, s, c);
    const Dual angle = x;  // one of the results may be x
    sine = angle.Chain(s, c);
    cosine = angle.Chain(c, -s);
  }
  static GEOMATH_INLINE Dual Atan2(const Dual& y, const Dual& x) {
    const double r2 = x.value * x.value + y.value * y.value;
    return {Base::Atan2(y.value, x.value), (y.first * x.value - x.first * y.value) / r2,
            (y.second * x.value - x.second * y.value) / r2};
  }
  static GEOMATH_INLINE Dual Atan(const Dual& x) {
    return x.Chain(Base::Atan(x.value), 1 / (1 + x.value * x.value));
  }
  static GEOMATH_INLINE Dual Log(const Dual& x) { return x.Chain(Base::Log(x.value), 1 / x.value); }
  static GEOMATH_INLINE Dual Log1p(const Dual& x) {
    return x.Chain(Base::Log1p(x.value), 1 / (1 + x.value));
  }
  static GEOMATH_INLINE Dual Exp(const Dual& x) {
    const double e = Base::Exp(x.value);
    return x.Chain(e, e);
  }
  static GEOMATH_INLINE Dual Sqrt(const Dual& x) { return sqrt(x); }
  /// At ±0 the derivative on the side of the sign.
  static GEOMATH_INLINE Dual Abs(const Dual& x) {
    const double sign = std::copysign(1.0, x.value);
    return {sign * x.value, sign * x.first, sign * x.second};
  }
  static GEOMATH_INLINE Dual CopySign(const Dual& x, const Dual& sign) {
    const double turn = std::copysign(1.0, x.value) * std::copysign(1.0, sign.value);
    return {turn * x.value, turn * x.first, turn * x.second};
  }
};

}  // namespace zel_cs::geomath::simd
