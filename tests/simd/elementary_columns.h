#pragma once

#include <cstddef>

#include "geomath/simd/instruction_set.h"

/// The polynomial functions over columns, as kernels use them.
template <class Target>
struct ElementaryColumns {
  static void Sin(const double* x, double* y, std::size_t count);
  static void Cos(const double* x, double* y, std::size_t count);
  static void Atan(const double* x, double* y, std::size_t count);
  static void Log(const double* x, double* y, std::size_t count);
  static void Log1p(const double* x, double* y, std::size_t count);
  static void Exp(const double* x, double* y, std::size_t count);
  static void Atan2(const double* y, const double* x, double* angle, std::size_t count);
};
