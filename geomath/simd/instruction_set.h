#pragma once

#include "geomath/export.h"

namespace zel_cs::geomath::simd {

/// The instruction sets that batch kernels are compiled for, the narrowest first.
enum class InstructionSet { baseline, avx2, avx512 };

/// The set that batches run on: the best that this machine and this build have, unless another was
/// forced. Results are the same bits on each.
GEOMATH_API InstructionSet ActiveInstructionSet() noexcept;

/// Makes all later batches use `wanted`, or the best available when this machine or build lacks
/// it. Returns the set in force before. For tests and measurements; safe from any thread.
GEOMATH_API InstructionSet ForceInstructionSet(InstructionSet wanted) noexcept;

/// Tags of the variants that a kernel template is instantiated for.
struct Baseline {};
struct Avx2 {};
struct Avx512 {};

/// What `variantFor`, a callable on a tag, gives for the set in force: usually the address of that
/// tag's kernel function.
template <class VariantFor>
auto ForActiveSet(VariantFor variantFor) {
  switch (ActiveInstructionSet()) {
#ifdef GEOMATH_HAS_AVX512
    case InstructionSet::avx512:
      return variantFor(Avx512{});
#endif
#ifdef GEOMATH_HAS_AVX2
    case InstructionSet::avx2:
      return variantFor(Avx2{});
#endif
    default:
      return variantFor(Baseline{});
  }
}

}  // namespace zel_cs::geomath::simd
