#pragma once

#include <cstddef>

#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// Σ c[j]·sin((j + 1)·θ) for j = 0 … N − 1 by Clenshaw's recurrence (Clenshaw 1955), from the sine
/// and cosine of θ, so that a series in 2φ, 4φ, … costs no further sine.
template <std::size_t N, class Real>
GEOMATH_INLINE Real ClenshawSin(const double (&c)[N], Real sinTheta, Real cosTheta) {
  const Real twoCos = 2 * cosTheta;
  Real b1 = c[N - 1], b2 = 0;
  for (std::size_t j = N - 1; j-- > 0;) {
    const Real b = c[j] + twoCos * b1 - b2;
    b2 = b1;
    b1 = b;
  }
  return b1 * sinTheta;
}

/// The angle, radians, up to which AddSmallAngle holds.
inline constexpr double kMaxSmallAngle = 0.03;

/// Sine and cosine of x become those of x + delta (`kSign` −1), or the hyperbolic ones do (+1), by
/// the addition theorems. For |delta| < kMaxSmallAngle, where the first neglected terms of the
/// power series of delta's own are below 1e-17.
template <int kSign, class Real>
GEOMATH_INLINE void AddSmallAngle(Real delta, Real& sine, Real& cosine) {
  static_assert(kSign == 1 || kSign == -1);
  const Real z = kSign * (delta * delta);
  const Real odd = delta + delta * z * (1.0 / 6 + z * (1.0 / 120 + 1.0 / 5040 * z));
  const Real evenLess1 = z * (1.0 / 2 + z * (1.0 / 24 + 1.0 / 720 * z));
  const Real s = sine, c = cosine;
  sine = s + (s * evenLess1 + c * odd);
  cosine = c + (c * evenLess1 + kSign * (s * odd));
}

/// Sine and cosine of x become those of x + delta, |delta| < 0.0055, for which shorter power series do.
template <class Real>
GEOMATH_INLINE void AddTinyAngle(Real delta, Real& sine, Real& cosine) {
  const Real z = delta * delta;
  const Real odd = delta - delta * z * (1.0 / 6 - 1.0 / 120 * z);
  const Real oneLessEven = z * (1.0 / 2 - 1.0 / 24 * z);
  const Real s = sine, c = cosine;
  sine = s + (c * odd - s * oneLessEven);
  cosine = c - (c * oneLessEven + s * odd);
}

/// Sine and cosine of the real part of an angle, hyperbolic ones of its imaginary part.
template <class Real>
struct ComplexAngleOf {
  Real sin, cos, sinh, cosh;
};
using ComplexAngle = ComplexAngleOf<double>;

template <class Real>
struct ComplexSumOf {
  Real real, imag;
};
using ComplexSum = ComplexSumOf<double>;

/// Σ c[j]·sin((j + 1)·ζ) of a complex angle ζ by the same recurrence, at least two terms.
template <std::size_t N, class Real>
GEOMATH_INLINE ComplexSumOf<Real> ClenshawSin(const double (&c)[N],
                                              const ComplexAngleOf<Real>& zeta) {
  const Real hr = 2 * zeta.cos * zeta.cosh, hi = -2 * zeta.sin * zeta.sinh;  // 2·cos ζ
  Real r1 = c[N - 2] + hr * c[N - 1], i1 = hi * c[N - 1], r2 = c[N - 1], i2 = 0;
  for (std::size_t j = N - 2; j-- > 0;) {
    const Real r = c[j] + hr * r1 - hi * i1 - r2;
    const Real i = hi * r1 + hr * i1 - i2;
    r2 = r1;
    i2 = i1;
    r1 = r;
    i1 = i;
  }
  const Real sr = zeta.sin * zeta.cosh, si = zeta.cos * zeta.sinh;  // sin ζ
  return {r1 * sr - i1 * si, r1 * si + i1 * sr};
}

}  // namespace zel_cs::geomath
