#pragma once

#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// Rounds down: beside 1.5·2^52 there is no room for a fraction. Exact below 2^51, where any grid
/// ends; larger numbers stay large, NaN stays. Without a branch or a call, for columns.
GEOMATH_INLINE double RoundDown(double x) {
  constexpr double kRound = 0x1.8p52;
  const double nearest = (x + kRound) - kRound;
  return nearest > x ? nearest - 1 : nearest;
}

}  // namespace zel_cs::geomath
