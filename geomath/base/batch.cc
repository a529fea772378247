#include "geomath/base/batch.h"

#include <cmath>
#include <limits>

namespace zel_cs::geomath {

bool AllWithin(const double* values, std::size_t count, double bound) {
  if (count == 1) return std::abs(values[0]) <= bound;
  const auto allWithin =
      simd::ForActiveSet([](auto target) { return &BatchKernel<decltype(target)>::AllWithin; });
  return allWithin(values, count, bound);
}

template <std::size_t N>
std::size_t MarkFailures(double* const (&columns)[N], std::size_t count) {
  const auto mark = simd::ForActiveSet(
      [](auto target) { return &BatchKernel<decltype(target)>::template MarkFailures<N>; });
  return mark(columns, count);
}

template <std::size_t N, std::size_t kRoom>
void Separate(const double* points, double (&columns)[N][kRoom], std::size_t count) {
  const auto separate = simd::ForActiveSet(
      [](auto target) { return &BatchKernel<decltype(target)>::template Separate<N, kRoom>; });
  separate(points, columns, count);
}

template <std::size_t N, std::size_t kRoom>
void Interleave(const double (&columns)[N][kRoom], double* points, std::size_t count) {
  const auto interleave = simd::ForActiveSet(
      [](auto target) { return &BatchKernel<decltype(target)>::template Interleave<N, kRoom>; });
  interleave(columns, points, count);
}

template std::size_t MarkFailures(double* const (&)[2], std::size_t);
template std::size_t MarkFailures(double* const (&)[3], std::size_t);
template std::size_t MarkFailures(double* const (&)[4], std::size_t);
template std::size_t MarkFailures(double* const (&)[6], std::size_t);
template void Separate(const double*, double (&)[2][kBatchBlock], std::size_t);
template void Separate(const double*, double (&)[3][kBatchBlock], std::size_t);
template void Separate(const double*, double (&)[9][kMatrixBlock], std::size_t);
template void Interleave(const double (&)[2][kBatchBlock], double*, std::size_t);
template void Interleave(const double (&)[3][kBatchBlock], double*, std::size_t);
template void Interleave(const double (&)[9][kMatrixBlock], double*, std::size_t);

}  // namespace zel_cs::geomath
