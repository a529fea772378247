#pragma once

#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

struct SinhCosh {
  double sinh, cosh;
};

/// Hyperbolic sine and cosine of one argument from one exponential: absolute accuracy a few units in
/// the last place of the cosine, so that the sine of a small argument loses relative digits.
template <class Math = simd::Scalar>
GEOMATH_INLINE SinhCosh HyperbolicPair(double x) {
  const double grow = Math::Exp(x), decay = 1 / grow;
  return {(grow - decay) / 2, (grow + decay) / 2};
}

}  // namespace zel_cs::geomath
