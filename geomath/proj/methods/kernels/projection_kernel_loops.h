#pragma once

/// The loops of ProjectionKernel; included by kernel sources only.

#include "geomath/proj/methods/kernels/projection_kernel.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

template <class Target, class Formulas>
void ProjectionKernel<Target, Formulas>::Forward(const Formulas& formulas,
                                                 double* GEOMATH_RESTRICT b,
                                                 double* GEOMATH_RESTRICT l, std::size_t count) {
  const Formulas local = formulas;  // plain doubles that no column can alias
  for (std::size_t i = 0; i < count; ++i)
    local.template Forward<simd::Polynomial<Target>>(b[i], l[i]);
}

template <class Target, class Formulas>
void ProjectionKernel<Target, Formulas>::Inverse(const Formulas& formulas,
                                                 double* GEOMATH_RESTRICT n,
                                                 double* GEOMATH_RESTRICT e, std::size_t count) {
  const Formulas local = formulas;
  for (std::size_t i = 0; i < count; ++i)
    local.template Inverse<simd::Polynomial<Target>>(n[i], e[i]);
}

}  // namespace zel_cs::geomath
