#include "geomath/base/batch_kernel.h"

#include <bit>
#include <cstdint>
#include <limits>

#include "geomath/simd/instruction_set.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

// Magnitudes order as their bits do, with infinity and then NaN above all numbers: the difference
// of those of the bound and of a larger magnitude is negative.
template <class Target>
bool BatchKernel<Target>::AllWithin(const double* values, std::size_t count, double bound) {
  constexpr std::uint64_t kMagnitude = ~std::uint64_t{0} >> 1;
  const std::uint64_t limit = std::bit_cast<std::uint64_t>(bound);
  std::uint64_t differences = 0;
  for (std::size_t i = 0; i < count; ++i)
    differences |= limit - (std::bit_cast<std::uint64_t>(values[i]) & kMagnitude);
  return differences >> 63 == 0;
}

template <class Target>
template <std::size_t N>
std::size_t BatchKernel<Target>::MarkFailures(double* const (&columns)[N], std::size_t count) {
  std::size_t good = 0;
  for (std::size_t i = 0; i < count; ++i) {
    double probe = 0;  // x − x is 0 for a finite x and NaN otherwise
    for (double* column : columns) probe += column[i] - column[i];
    const bool finite = probe == 0;
    for (double* column : columns)
      column[i] = finite ? column[i] : std::numeric_limits<double>::quiet_NaN();
    good += finite;
  }
  return good;
}

template <class Target>
template <std::size_t N>
void BatchKernel<Target>::Separate(const double* GEOMATH_RESTRICT points,
                                   double (*GEOMATH_RESTRICT columns)[kBatchBlock],
                                   std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t c = 0; c < N; ++c) columns[c][i] = points[N * i + c];
}

template <class Target>
template <std::size_t N>
void BatchKernel<Target>::Interleave(const double (*GEOMATH_RESTRICT columns)[kBatchBlock],
                                     double* GEOMATH_RESTRICT points, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t c = 0; c < N; ++c) points[N * i + c] = columns[c][i];
}

using Kernel = BatchKernel<simd::GEOMATH_KERNEL_TARGET>;
template struct BatchKernel<simd::GEOMATH_KERNEL_TARGET>;
template std::size_t Kernel::MarkFailures(double* const (&)[2], std::size_t);
template std::size_t Kernel::MarkFailures(double* const (&)[3], std::size_t);
template std::size_t Kernel::MarkFailures(double* const (&)[4], std::size_t);
template void Kernel::Separate<2>(const double*, double (*)[kBatchBlock], std::size_t);
template void Kernel::Separate<3>(const double*, double (*)[kBatchBlock], std::size_t);
template void Kernel::Separate<9>(const double*, double (*)[kBatchBlock], std::size_t);
template void Kernel::Interleave<2>(const double (*)[kBatchBlock], double*, std::size_t);
template void Kernel::Interleave<3>(const double (*)[kBatchBlock], double*, std::size_t);
template void Kernel::Interleave<9>(const double (*)[kBatchBlock], double*, std::size_t);

}  // namespace zel_cs::geomath
