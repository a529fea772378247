#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>

#include "geomath/simd/instruction_set.h"
#include "tests/simd/pack_columns.h"

namespace {

namespace simd = zel_cs::geomath::simd;

// Each lane beside the same expression in doubles: zeros of both signs, numbers at both ends of the
// range, and columns that start at any address.
template <class Target>
void ExpectDoublesLaneByLane() {
  constexpr std::size_t kLength = PackColumns<Target>::kLength;
  constexpr double kTiny = std::numeric_limits<double>::denorm_min();
  const double a[kLength + 1] = {9.0,  0.0,   -0.0,   0.1,    -0.3, 1e150, -1e-150, kTiny, 5.5,
                                 -7.7, 1e-20, 0x1p52, 1 / 3., 2.5,  -1e8,  1.0,     -2.0};
  const double b[kLength + 1] = {9.0, -0.0,  0.0,  0.7,    1e-9,  1e10, -1e150, 3.0, -kTiny,
                                 1.5, -1e20, 0.25, 1 / 7., -3e-5, 1e8,  -1.0,   6.1};
  for (std::size_t from = 0; from < 2; ++from) {
    double eight[kLength], sixteen[kLength];
    PackColumns<Target>::ByEight(a + from, b + from, eight);
    PackColumns<Target>::BySixteen(a + from, b + from, sixteen);
    for (std::size_t i = 0; i < kLength; ++i) {
      const auto expected =
          std::bit_cast<std::uint64_t>(OperationsOfPack(a[from + i], b[from + i]));
      EXPECT_EQ(std::bit_cast<std::uint64_t>(eight[i]), expected) << i;
      EXPECT_EQ(std::bit_cast<std::uint64_t>(sixteen[i]), expected) << i;
    }
  }
}

TEST(Pack, EveryLaneIsADouble) {
  ExpectDoublesLaneByLane<simd::Baseline>();
#ifdef GEOMATH_HAS_AVX2
  if (simd::ActiveInstructionSet() >= simd::InstructionSet::avx2)
    ExpectDoublesLaneByLane<simd::Avx2>();
#endif
#ifdef GEOMATH_HAS_AVX512
  if (simd::ActiveInstructionSet() >= simd::InstructionSet::avx512)
    ExpectDoublesLaneByLane<simd::Avx512>();
#endif
}

}  // namespace
