#pragma once

#include <cstddef>

namespace zel_cs::geomath {

/// Σ c[j]·sin((j + 1)·θ) for j = 0 … N − 1 by Clenshaw's recurrence (Clenshaw 1955), from the sine
/// and cosine of θ, so that a series in 2φ, 4φ, … costs no further sine.
template <std::size_t N>
double ClenshawSin(const double (&c)[N], double sinTheta, double cosTheta) {
  const double twoCos = 2 * cosTheta;
  double b1 = 0, b2 = 0;
  for (std::size_t j = N; j-- > 0;) {
    const double b = c[j] + twoCos * b1 - b2;
    b2 = b1;
    b1 = b;
  }
  return b1 * sinTheta;
}

}  // namespace zel_cs::geomath
