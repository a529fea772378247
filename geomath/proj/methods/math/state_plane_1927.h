#pragma once

#include "geomath/base/angle.h"

namespace zel_cs::geomath {

// What the state plane tables of 1927 are built on (Claire 1968, C&GS Publication 62-4). Their
// coefficients contain the ellipsoid, so that a class on them does not follow SetEllipsoid.

inline constexpr double kClarke1866A = 6378206.4;  // metres
inline constexpr double kClarke1866B = 6356583.8;  // metres
inline constexpr double kClarke1866InvF = kClarke1866A / (kClarke1866A - kClarke1866B);
inline constexpr double kUsSurveyFoot = 1200.0 / 3937;  // metres
inline constexpr double kArcSecondsPerRad = 3600 * kDegPerRad;

}  // namespace zel_cs::geomath
