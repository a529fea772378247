#include "tests/simd/pack_columns.h"

#include "geomath/simd/instruction_set.h"
#include "geomath/simd/pack.h"

namespace simd = zel_cs::geomath::simd;

template <class Target>
void PackColumns<Target>::ByEight(const double* a, const double* b, double* result) {
  using Eight = simd::Pack<Target, 8>;
  for (std::size_t i = 0; i < kLength; i += Eight::kLanes)
    OperationsOfPack(Eight::Load(a + i), Eight::Load(b + i)).Store(result + i);
}

template <class Target>
void PackColumns<Target>::BySixteen(const double* a, const double* b, double* result) {
  using Sixteen = simd::Pack<Target, kLength>;
  OperationsOfPack(Sixteen::Load(a), Sixteen::Load(b)).Store(result);
}

template struct PackColumns<simd::GEOMATH_KERNEL_TARGET>;
