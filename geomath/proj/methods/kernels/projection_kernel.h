#pragma once

#include <cstddef>

namespace zel_cs::geomath {

/// A projection over columns, in place on internal axes. `Formulas` is a plain record of the
/// projection's prepared constants with
///   template <class Math> … Forward(double& b, double& l) const;
///   template <class Math> … Inverse(double& n, double& e) const;
///   bool ServesForward(double b, double l) const, bool ServesInverse(double n, double e) const;
/// the same statements that its ForwardPoint and InversePoint run with Math = simd::Libm. The last
/// two tell for which points the columns hold; they are false for NaN.
/// Every Formulas is instantiated in a kernel source of its own.
template <class Target, class Formulas>
struct ProjectionKernel {
  static void Forward(const Formulas& formulas, double* b, double* l, std::size_t count);
  static void Inverse(const Formulas& formulas, double* n, double* e, std::size_t count);
};

}  // namespace zel_cs::geomath
