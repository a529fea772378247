#pragma once

#include "geomath/base/angle.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// Brings x into [−bound, bound] by steps of 2·bound, at most two in each direction; a value still
/// outside after them is returned as it is. Without branches, for columns.
template <class Real>
GEOMATH_INLINE Real FoldAngle(Real x, double bound) {
  const double turn = bound + bound;
  x = x > bound ? x - turn : x;
  x = x > bound ? x - turn : x;
  x = x < -bound ? x + turn : x;
  x = x < -bound ? x + turn : x;
  return x;
}

/// SetValue(x, 1) inline: a longitude difference folded into [−π, π].
template <class Real>
GEOMATH_INLINE Real FoldTurn(Real x) {
  return FoldAngle(x, kPi);
}

}  // namespace zel_cs::geomath
