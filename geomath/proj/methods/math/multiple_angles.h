#pragma once

#include <cstddef>

#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// Σ c[j]·sin((j + 1)·θ) for j = 0 … N − 1 by Clenshaw's recurrence (Clenshaw 1955), from the sine
/// and cosine of θ, so that a series in 2φ, 4φ, … costs no further sine.
template <std::size_t N>
GEOMATH_INLINE double ClenshawSin(const double (&c)[N], double sinTheta, double cosTheta) {
  const double twoCos = 2 * cosTheta;
  double b1 = 0, b2 = 0;
  for (std::size_t j = N; j-- > 0;) {
    const double b = c[j] + twoCos * b1 - b2;
    b2 = b1;
    b1 = b;
  }
  return b1 * sinTheta;
}

/// Sine and cosine of the real part of an angle, hyperbolic ones of its imaginary part.
struct ComplexAngle {
  double sin, cos, sinh, cosh;
};

struct ComplexSum {
  double real, imag;
};

/// Σ c[j]·sin((j + 1)·ζ) of a complex angle ζ by the same recurrence.
template <std::size_t N>
GEOMATH_INLINE ComplexSum ClenshawSin(const double (&c)[N], const ComplexAngle& zeta) {
  const double hr = 2 * zeta.cos * zeta.cosh, hi = -2 * zeta.sin * zeta.sinh;  // 2·cos ζ
  double r1 = 0, i1 = 0, r2 = 0, i2 = 0;
  for (std::size_t j = N; j-- > 0;) {
    const double r = c[j] + hr * r1 - hi * i1 - r2;
    const double i = hi * r1 + hr * i1 - i2;
    r2 = r1;
    i2 = i1;
    r1 = r;
    i1 = i;
  }
  const double sr = zeta.sin * zeta.cosh, si = zeta.cos * zeta.sinh;  // sin ζ
  return {r1 * sr - i1 * si, r1 * si + i1 * sr};
}

}  // namespace zel_cs::geomath
