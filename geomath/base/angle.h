#pragma once

#include <numbers>

#include "geomath/export.h"

namespace zel_cs::geomath {

/// Angles in radians.
inline constexpr double kPi = std::numbers::pi;
inline constexpr double kHalfPi = kPi / 2;
inline constexpr double kTwoPi = 2 * kPi;
/// Radians in a degree and back, radians in a second of arc: an angle times its factor.
inline constexpr double kRadPerDeg = 0.017453292519943295;        // π/180
inline constexpr double kDegPerRad = 57.29577951308232;           // 180/π
inline constexpr double kRadPerArcSecond = 4.84813681109536e-06;  // π/(180·3600)

/// Brings an angle (radians) into range: [−π, π] when `kind` is not 0, by steps of 2π; [−π/2, π/2]
/// when it is 0, by steps of π (shifted, not reflected). The bounds belong to the range. At most
/// two steps are made in each direction; a value still outside after them is returned as it is.
GEOMATH_API double SetValue(double x, int kind);

/// Returns its argument: the "DMS" values of this library are plain decimal degrees.
GEOMATH_API double DMSToDeg(double x);

}  // namespace zel_cs::geomath
