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
  Dual(double constant) : value(constant) {}
  Dual(double v, double d1, double d2) : value(v), first(d1), second(d2) {}

  /// f(x) from the value of f and its slope at x.
  Dual Chain(double f, double slope) const { return {f, slope * first, slope * second}; }

  Dual operator-() const { return {-value, -first, -second}; }
  friend Dual operator+(const Dual& x, const Dual& y) {
    return {x.value + y.value, x.first + y.first, x.second + y.second};
  }
  friend Dual operator-(const Dual& x, const Dual& y) {
    return {x.value - y.value, x.first - y.first, x.second - y.second};
  }
  friend Dual operator*(const Dual& x, const Dual& y) {
    return {x.value * y.value, x.first * y.value + x.value * y.first,
            x.second * y.value + x.value * y.second};
  }
  friend Dual operator/(const Dual& x, const Dual& y) {
    const double q = x.value / y.value;
    return {q, (x.first - q * y.first) / y.value, (x.second - q * y.second) / y.value};
  }
  friend Dual sqrt(const Dual& x) {
    const double root = std::sqrt(x.value);
    return x.Chain(root, 0.5 / root);
  }
  Dual& operator+=(const Dual& y) { return *this = *this + y; }
  Dual& operator-=(const Dual& y) { return *this = *this - y; }

  friend bool operator<(const Dual& x, const Dual& y) { return x.value < y.value; }
  friend bool operator>(const Dual& x, const Dual& y) { return x.value > y.value; }
  friend bool operator<=(const Dual& x, const Dual& y) { return x.value <= y.value; }
  friend bool operator>=(const Dual& x, const Dual& y) { return x.value >= y.value; }
  friend bool operator==(const Dual& x, const Dual& y) { return x.value == y.value; }
};

/// The functions of Libm on dual numbers. Statements take the forms that columns have, which follow
/// no iteration.
struct DualMath {
  using Real = Dual;
  static constexpr bool kColumns = true;
  static void SinCos(const Dual& x, Dual& sine, Dual& cosine) {
    const double s = std::sin(x.value), c = std::cos(x.value);
    const Dual angle = x;  // one of the results may be x
    sine = angle.Chain(s, c);
    cosine = angle.Chain(c, -s);
  }
  static Dual Atan2(const Dual& y, const Dual& x) {
    const double r2 = x.value * x.value + y.value * y.value;
    return {std::atan2(y.value, x.value), (y.first * x.value - x.first * y.value) / r2,
            (y.second * x.value - x.second * y.value) / r2};
  }
  static Dual Atan(const Dual& x) {
    return x.Chain(std::atan(x.value), 1 / (1 + x.value * x.value));
  }
  static Dual Log(const Dual& x) { return x.Chain(std::log(x.value), 1 / x.value); }
  static Dual Log1p(const Dual& x) { return x.Chain(std::log1p(x.value), 1 / (1 + x.value)); }
  static Dual Exp(const Dual& x) {
    const double e = std::exp(x.value);
    return x.Chain(e, e);
  }
  static Dual Sqrt(const Dual& x) { return sqrt(x); }
  /// At ±0 the derivative on the side of the sign.
  static Dual Abs(const Dual& x) { return std::signbit(x.value) ? -x : x; }
  static Dual CopySign(const Dual& x, const Dual& sign) {
    return std::signbit(x.value) == std::signbit(sign.value) ? x : -x;
  }
};

}  // namespace zel_cs::geomath::simd
