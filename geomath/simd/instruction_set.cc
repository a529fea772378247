#include "geomath/simd/instruction_set.h"

#include <algorithm>
#include <atomic>

namespace zel_cs::geomath::simd {
namespace {

InstructionSet BestAvailable() noexcept {
#ifdef GEOMATH_HAS_AVX512
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw"))
    return InstructionSet::avx512;
#endif
#ifdef GEOMATH_HAS_AVX2
  if (__builtin_cpu_supports("avx2")) return InstructionSet::avx2;
#endif
  return InstructionSet::baseline;
}

std::atomic<InstructionSet>& Current() noexcept {
  static std::atomic<InstructionSet> current{BestAvailable()};
  return current;
}

}  // namespace

InstructionSet ActiveInstructionSet() noexcept { return Current().load(std::memory_order_relaxed); }

InstructionSet ForceInstructionSet(InstructionSet wanted) noexcept {
  return Current().exchange(std::min(wanted, BestAvailable()));
}

}  // namespace zel_cs::geomath::simd
