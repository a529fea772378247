#pragma once

#include <cmath>
#include <cstddef>

#include "geomath/base/angle.h"
#include "geomath/simd/dual.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// The two directions of a projection as conversions of simd::ColumnKernel, on internal axes.
/// `Formulas` is a plain record of the projection's prepared constants with
///   template <class Math> … Forward(double& b, double& l) const;
///   template <class Math> … Inverse(double& n, double& e) const;
///   bool ServesForward(double b, double l) const, bool ServesInverse(double n, double e) const;
/// the same statements that its ForwardPoint and InversePoint run with Math = simd::Scalar. The last
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

/// Whether a record states its derivatives, for every point and in all functions, as
///   template <class Math> void Differentiate(double& b, double& l, double&, double&) const;
/// with the first four columns of DerivativesBy: because its class does, or in fewer operations than
/// dual numbers.
template <class Formulas>
concept StatesDerivatives = requires(const Formulas f, double x) {
  f.template Differentiate<simd::Scalar>(x, x, x, x);
};

/// The derivatives of Forward, by dual numbers unless the record states them, and what it gives, to the
/// bit: latitude, longitude and four columns that are not read become GridDerivatives in its order, not
/// finite where the formulas refuse the point, northing and easting.
template <class Formulas>
struct DerivativesBy {
  static constexpr std::size_t kColumns = 6, kInputs = 2;
  Formulas formulas;

  template <class Math>
  GEOMATH_INLINE void Convert(double& b, double& l, double& third, double& fourth, double& n,
                              double& e) const {
    if constexpr (StatesDerivatives<Formulas>) {
      double northing = b, easting = l;
      formulas.template Forward<Math>(northing, easting);
      formulas.template Differentiate<Math>(b, l, third, fourth);
      n = northing;
      e = easting;
    } else {
      simd::Dual north(b, 1, 0), east(l, 0, 1);
      formulas.template Forward<simd::DualMath<Math>>(north, east);
      n = north.value;
      e = east.value;
      const double exists = 0 * (north.value + east.value);  // or NaN
      b = north.first + exists;
      l = east.first + exists;
      third = north.second + exists;
      fourth = east.second + exists;
    }
  }
  GEOMATH_INLINE bool ServesDerivatives(double b, double l) const {
    const bool latitude = std::abs(b) < kHalfPi;
    if constexpr (requires { formulas.ServesDerivatives(b, l); })
      return latitude & formulas.ServesDerivatives(b, l);
    else
      return latitude & formulas.ServesForward(b, l);
  }
  GEOMATH_INLINE bool Serves(double b, double l, double, double, double, double) const {
    const bool derivatives = ServesDerivatives(b, l), forward = formulas.ServesForward(b, l);
    return derivatives & forward;
  }
};

}  // namespace zel_cs::geomath
