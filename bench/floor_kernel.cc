#include "bench/floor_kernel.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "geomath/simd/instruction_set.h"
#include "geomath/simd/pack.h"

namespace simd = zel_cs::geomath::simd;

namespace {

constexpr double kAny = 1 - 0x1p-40;  // for factors, terms and dividends: nothing overflows

/// Registers of two columns side by side.
template <class Numbers, std::size_t... R>
struct Abreast {
  static constexpr std::size_t kCount = sizeof...(R) * Numbers::kLanes;
  Numbers x[sizeof...(R)], y[sizeof...(R)];

  // Folds, since a loop would keep the registers in memory.
  GEOMATH_INLINE Abreast(const double* first, const double* second) {
    ((x[R] = Numbers::Load(first + R * Numbers::kLanes)), ...);
    ((y[R] = Numbers::Load(second + R * Numbers::kLanes)), ...);
  }
  GEOMATH_INLINE void Store(double* first, double* second) const {
    (x[R].Store(first + R * Numbers::kLanes), ...);
    (y[R].Store(second + R * Numbers::kLanes), ...);
  }
  GEOMATH_INLINE void Multiply() { ((x[R] *= kAny), ...); }
  GEOMATH_INLINE void Add() { ((y[R] += kAny), ...); }
  GEOMATH_INLINE void Divide() { ((x[R] = kAny / x[R]), ...); }
  GEOMATH_INLINE void TakeRoots() { ((x[R] = Root(x[R])), ...); }

 private:
  static GEOMATH_INLINE Numbers Root(const Numbers& of) {
    double lanes[Numbers::kLanes];
    of.Store(lanes);
    for (double& lane : lanes) lane = std::sqrt(lane);
    return Numbers::Load(lanes);
  }
};

}  // namespace

template <class Target>
void FloorKernel<Target>::Run(const Operations& operations, double* const* columns,
                              std::size_t columnCount, std::size_t count) {
  // Fourteen registers and the constant are what AVX2 has room for.
  using Numbers = simd::Pack<Target, simd::RegisterLanes<Target>()>;
  using Points = Abreast<Numbers, 0, 1, 2, 3, 4, 5, 6>;
  const auto [products, sums, divisions, roots] = operations;
  const int slow = divisions + roots, rounds = std::max(slow, 1);
  for (std::size_t begin = 0; begin < count; begin += Points::kCount) {
    const std::size_t i = std::min(begin, count - Points::kCount);  // a rest with some before it
    Points points(columns[0] + i, columns[1] + i);
    // An equal share of products and sums before each division or root.
    int p = 0, s = 0;
    for (int round = 1; round <= rounds; ++round) {
      const int toP = products * round / rounds, toS = sums * round / rounds;
      for (; p < toP && s < toS; ++p, ++s) {
        points.Multiply();
        points.Add();
      }
      for (; p < toP; ++p) points.Multiply();
      for (; s < toS; ++s) points.Add();
      if (round <= divisions)
        points.Divide();
      else if (round <= slow)
        points.TakeRoots();
    }
    points.Store(columns[0] + i, columns[1] + i);
    for (std::size_t c = 2; c < columnCount; ++c)
      Abreast<Numbers, 0, 1, 2, 3, 4, 5, 6>(columns[c] + i, columns[c] + i)
          .Store(columns[c] + i, columns[c] + i);
  }
}

template struct FloorKernel<simd::GEOMATH_KERNEL_TARGET>;
