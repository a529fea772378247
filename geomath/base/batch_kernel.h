#pragma once

#include <cstddef>

namespace zel_cs::geomath {

/// Points of a batch that go through all steps together: small enough that their columns stay in
/// the first-level cache.
inline constexpr std::size_t kBatchBlock = 256;
/// Matrices of a batch in columns at one time, beside the columns of a block.
inline constexpr std::size_t kMatrixBlock = 64;

/// What every batch does with columns beside converting them.
template <class Target>
struct BatchKernel {
  /// As the functions of these names.
  static bool AllWithin(const double* values, std::size_t count, double bound);
  template <std::size_t N>
  static std::size_t MarkFailures(double* const (&columns)[N], std::size_t count);

  /// Points of N numbers that stand side by side to columns, and back.
  template <std::size_t N, std::size_t kRoom>
  static void Separate(const double* points, double (*columns)[kRoom], std::size_t count);
  template <std::size_t N, std::size_t kRoom>
  static void Interleave(const double (*columns)[kRoom], double* points, std::size_t count);
};

}  // namespace zel_cs::geomath
