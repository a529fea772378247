#pragma once

#include <cmath>

#include "geomath/simd/dual.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath::simd {

/// A number that depends on the first variable of Dual alone: what a projection computes from the
/// latitude. Beside a Dual it counts as one whose other derivative is 0, and gives its bits.
struct LatitudeDual {
  double value = 0, first = 0;

  LatitudeDual() = default;
  GEOMATH_INLINE LatitudeDual(double v, double d1) : value(v), first(d1) {}

  friend GEOMATH_INLINE LatitudeDual operator+(const LatitudeDual& x, const LatitudeDual& y) {
    return {x.value + y.value, x.first + y.first};
  }
  friend GEOMATH_INLINE LatitudeDual operator-(const LatitudeDual& x, const LatitudeDual& y) {
    return {x.value - y.value, x.first - y.first};
  }
  friend GEOMATH_INLINE LatitudeDual operator*(const LatitudeDual& x, const LatitudeDual& y) {
    return {x.value * y.value, x.first * y.value + x.value * y.first};
  }
  friend GEOMATH_INLINE LatitudeDual operator/(const LatitudeDual& x, const LatitudeDual& y) {
    const double q = x.value / y.value, r = 1 / y.value;
    return {q, (x.first - q * y.first) * r};
  }
  friend GEOMATH_INLINE LatitudeDual operator+(const LatitudeDual& x, double c) {
    return {x.value + c, x.first};
  }
  friend GEOMATH_INLINE LatitudeDual operator+(double c, const LatitudeDual& x) {
    return {c + x.value, x.first};
  }
  friend GEOMATH_INLINE LatitudeDual operator-(const LatitudeDual& x, double c) {
    return {x.value - c, x.first};
  }
  friend GEOMATH_INLINE LatitudeDual operator-(double c, const LatitudeDual& x) {
    return {c - x.value, -x.first};
  }
  friend GEOMATH_INLINE LatitudeDual operator*(const LatitudeDual& x, double c) {
    return {x.value * c, x.first * c};
  }
  friend GEOMATH_INLINE LatitudeDual operator*(double c, const LatitudeDual& x) {
    return {c * x.value, c * x.first};
  }
  friend GEOMATH_INLINE LatitudeDual operator/(double c, const LatitudeDual& y) {
    const double q = c / y.value, slope = -q / y.value;
    return {q, slope * y.first};
  }

  friend GEOMATH_INLINE LatitudeDual sqrt(const LatitudeDual& x) {
    const double root = std::sqrt(x.value);
    return {root, 0.5 / root * x.first};
  }

  friend GEOMATH_INLINE Dual operator+(const LatitudeDual& x, const Dual& y) {
    return {x.value + y.value, x.first + y.first, y.second};
  }
  friend GEOMATH_INLINE Dual operator*(const Dual& x, const LatitudeDual& y) {
    return {x.value * y.value, x.first * y.value + x.value * y.first, x.second * y.value};
  }
  friend GEOMATH_INLINE Dual operator*(const LatitudeDual& x, const Dual& y) {
    return {x.value * y.value, x.first * y.value + x.value * y.first, x.value * y.second};
  }
};

/// What statements of a projection take for numbers of the latitude alone, and the functions of these:
/// those of `Math`, but for dual numbers.
template <class Math>
struct LatitudeMath : Math {
  static GEOMATH_INLINE typename Math::Real Of(const typename Math::Real& latitude) {
    return latitude;
  }
};

template <class Base>
struct LatitudeMath<DualMath<Base>> {
  using Real = LatitudeDual;
  static GEOMATH_INLINE LatitudeDual Of(const Dual& latitude) {
    return {latitude.value, latitude.first};
  }
  static GEOMATH_INLINE void SinCos(const LatitudeDual& x, LatitudeDual& sine,
                                    LatitudeDual& cosine) {
    double s, c;
    Base::SinCos(x.value, s, c);
    const double slope = x.first;  // one of the results may be x
    sine = {s, c * slope};
    cosine = {c, -s * slope};
  }
  static GEOMATH_INLINE LatitudeDual Sqrt(const LatitudeDual& x) { return sqrt(x); }
};

}  // namespace zel_cs::geomath::simd
