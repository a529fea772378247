#pragma once

#include "geomath/export.h"

namespace zel_cs::geomath::simd {

/// The instruction sets that batch kernels are compiled for.
enum class InstructionSet { baseline, avx2 };

/// The set that batches run on: the best that this machine and this build have, unless another was
/// forced. Results are the same bits on each.
GEOMATH_API InstructionSet ActiveInstructionSet() noexcept;

/// Makes all later batches use `wanted`, or the best available when this machine or build lacks
/// it. Returns the set in force before. For tests and measurements; safe from any thread.
GEOMATH_API InstructionSet ForceInstructionSet(InstructionSet wanted) noexcept;

/// Tags of the variants that a kernel template is instantiated for.
struct Baseline {};
struct Avx2 {};

#ifdef GEOMATH_HAS_AVX2
using BestCompiled = Avx2;
#else
using BestCompiled = Baseline;
#endif

/// Chooses between the two variants of a kernel function.
template <class Function>
Function Choose(Function baseline, Function best) {
  return ActiveInstructionSet() == InstructionSet::baseline ? baseline : best;
}

}  // namespace zel_cs::geomath::simd
