#pragma once

#include <cstddef>

namespace geomath_files {

/// A column in another unit; by 1 it stays as it is, to the bit.
inline void Multiply(double* values, std::size_t count, double factor) {
  if (factor == 1) return;
  for (std::size_t i = 0; i < count; ++i) values[i] *= factor;
}

inline void Divide(double* values, std::size_t count, double divisor) {
  if (divisor == 1) return;
  for (std::size_t i = 0; i < count; ++i) values[i] /= divisor;
}

}  // namespace geomath_files
