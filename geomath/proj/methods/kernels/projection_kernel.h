#pragma once

#include <cstddef>

#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// The two directions of a projection as conversions of simd::ColumnKernel, on internal axes.
/// `Formulas` is a plain record of the projection's prepared constants with
///   template <class Math> … Forward(double& b, double& l) const;
///   template <class Math> … Inverse(double& n, double& e) const;
///   bool ServesForward(double b, double l) const, bool ServesInverse(double n, double e) const;
/// the same statements that its ForwardPoint and InversePoint run with Math = simd::Libm. The last
/// two tell for which points the columns hold; they are false for NaN.
/// Every Formulas is instantiated in a kernel source of its own.
template <class Formulas>
struct ForwardOf {
  static constexpr std::size_t kColumns = 2;
  Formulas formulas;

  template <class Math>
  GEOMATH_INLINE void Convert(double& b, double& l) const {
    formulas.template Forward<Math>(b, l);
  }
  GEOMATH_INLINE bool Serves(double b, double l) const { return formulas.ServesForward(b, l); }
};

template <class Formulas>
struct InverseOf {
  static constexpr std::size_t kColumns = 2;
  Formulas formulas;

  template <class Math>
  GEOMATH_INLINE void Convert(double& n, double& e) const {
    formulas.template Inverse<Math>(n, e);
  }
  GEOMATH_INLINE bool Serves(double n, double e) const { return formulas.ServesInverse(n, e); }
};

}  // namespace zel_cs::geomath
