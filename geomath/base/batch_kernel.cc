#include "geomath/base/batch_kernel.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "geomath/simd/instruction_set.h"
#include "geomath/simd/kernel.h"
#include "geomath/simd/pack.h"

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

// The sum of a point's coordinates is finite where they all are, but for numbers near the largest.
template <class Target>
template <std::size_t N>
std::size_t BatchKernel<Target>::MarkFailures(double* const (&columns)[N], std::size_t count) {
  constexpr std::uint64_t kMagnitude = ~std::uint64_t{0} >> 1;
  constexpr auto kLimit = std::bit_cast<std::uint64_t>(std::numeric_limits<double>::max());
  std::uint64_t differences = 0;
  for (std::size_t i = 0; i < count; ++i) {
    double sum = 0;
    for (const double* column : columns) sum += column[i];
    differences |= kLimit - (std::bit_cast<std::uint64_t>(sum) & kMagnitude);
  }
  if (differences >> 63 == 0) return count;

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

#if defined(__GNUC__) && defined(__has_builtin)
#if __has_builtin(__builtin_shufflevector)
#define GEOMATH_TRANSPOSES
#endif
#endif

#ifdef GEOMATH_TRANSPOSES

/// So many rows of so many numbers as fill registers, and their transposition: the halves of blocks
/// off the diagonal change places, for blocks of 2, 4, … numbers (Eklundh 1972).
template <class Target>
struct Square {
  static constexpr std::size_t kSide = simd::RegisterLanes<Target>();
  using Register [[gnu::vector_size(kSide * sizeof(double))]] = double;
  Register rows[kSide];

  GEOMATH_INLINE void Load(const double* from, std::size_t stride) {
    for (std::size_t r = 0; r < kSide; ++r)
      std::memcpy(&rows[r], from + r * stride, sizeof(Register));
  }
  GEOMATH_INLINE void Store(double* to, std::size_t stride) const {
    for (std::size_t r = 0; r < kSide; ++r)
      std::memcpy(to + r * stride, &rows[r], sizeof(Register));
  }
  GEOMATH_INLINE void Transpose() { TransposeFrom<1>(); }

 private:
  template <std::size_t kHalf>
  GEOMATH_INLINE void TransposeFrom() {
    if constexpr (kHalf < kSide) {
      for (std::size_t r = 0; r < kSide; ++r)
        if ((r & kHalf) == 0) Swap<kHalf>(rows[r], rows[r + kHalf]);
      TransposeFrom<2 * kHalf>();
    }
  }
  template <std::size_t kHalf>
  static GEOMATH_INLINE void Swap(Register& upper, Register& lower) {
    [&]<int... C>(std::integer_sequence<int, C...>) {
      constexpr int kStep = kHalf, kFirst = kSide;
      const Register left =
          __builtin_shufflevector(upper, lower, ((C & kStep) ? kFirst + C - kStep : C)...);
      lower = __builtin_shufflevector(upper, lower, ((C & kStep) ? kFirst + C : C + kStep)...);
      upper = left;
    }
    (std::make_integer_sequence<int, kSide>());
  }
};

#endif

// Triples and pairs the compilers turn into shuffles by themselves, nine numbers into one after the
// other.
template <class Target>
template <std::size_t N, std::size_t kRoom>
void BatchKernel<Target>::Separate(const double* GEOMATH_RESTRICT points,
                                   double (*GEOMATH_RESTRICT columns)[kRoom], std::size_t count) {
  std::size_t first = 0;
#ifdef GEOMATH_TRANSPOSES
  using Block = Square<Target>;
  constexpr std::size_t kSide = Block::kSide, kWhole = N - N % kSide;
  for (; N > kSide && first + kSide <= count; first += kSide) {
    const double* const from = points + N * first;
    for (std::size_t c = 0; c < kWhole; c += kSide) {
      Block block;
      block.Load(from + c, N);
      block.Transpose();
      block.Store(&columns[c][first], kRoom);
    }
    for (std::size_t c = kWhole; c < N; ++c)
      for (std::size_t i = 0; i < kSide; ++i) columns[c][first + i] = from[N * i + c];
  }
#endif
  for (std::size_t i = first; i < count; ++i)
    for (std::size_t c = 0; c < N; ++c) columns[c][i] = points[N * i + c];
}

template <class Target>
template <std::size_t N, std::size_t kRoom>
void BatchKernel<Target>::Interleave(const double (*GEOMATH_RESTRICT columns)[kRoom],
                                     double* GEOMATH_RESTRICT points, std::size_t count) {
  std::size_t first = 0;
#ifdef GEOMATH_TRANSPOSES
  using Block = Square<Target>;
  constexpr std::size_t kSide = Block::kSide, kWhole = N - N % kSide;
  for (; N > kSide && first + kSide <= count; first += kSide) {
    double* const to = points + N * first;
    for (std::size_t c = 0; c < kWhole; c += kSide) {
      Block block;
      block.Load(&columns[c][first], kRoom);
      block.Transpose();
      block.Store(to + c, N);
    }
    for (std::size_t c = kWhole; c < N; ++c)
      for (std::size_t i = 0; i < kSide; ++i) to[N * i + c] = columns[c][first + i];
  }
#endif
  for (std::size_t i = first; i < count; ++i)
    for (std::size_t c = 0; c < N; ++c) points[N * i + c] = columns[c][i];
}

using Kernel = BatchKernel<simd::GEOMATH_KERNEL_TARGET>;
template struct BatchKernel<simd::GEOMATH_KERNEL_TARGET>;
template std::size_t Kernel::MarkFailures(double* const (&)[2], std::size_t);
template std::size_t Kernel::MarkFailures(double* const (&)[3], std::size_t);
template std::size_t Kernel::MarkFailures(double* const (&)[4], std::size_t);
template std::size_t Kernel::MarkFailures(double* const (&)[6], std::size_t);
template void Kernel::Separate<2>(const double*, double (*)[kBatchBlock], std::size_t);
template void Kernel::Separate<3>(const double*, double (*)[kBatchBlock], std::size_t);
template void Kernel::Separate<9>(const double*, double (*)[kMatrixBlock], std::size_t);
template void Kernel::Interleave<2>(const double (*)[kBatchBlock], double*, std::size_t);
template void Kernel::Interleave<3>(const double (*)[kBatchBlock], double*, std::size_t);
template void Kernel::Interleave<9>(const double (*)[kMatrixBlock], double*, std::size_t);

}  // namespace zel_cs::geomath
