#pragma once

#include <cmath>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {

/// What projections take for a latitude and a longitude. Kept: half a turn and two turns.
inline bool IsLooselyValid(double b, double l) {
  return std::abs(b) <= kPi && std::abs(l) <= 2 * kTwoPi;
}

}  // namespace zel_cs::geomath
