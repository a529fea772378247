#pragma once

#include "geomath/base/angle.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

// What the state plane tables of 1927 are built on (Claire 1968, C&GS Publication 62-4). Their
// coefficients contain the ellipsoid, so that a class on them does not follow SetEllipsoid.

inline constexpr double kClarke1866A = 6378206.4;  // metres
inline constexpr double kClarke1866B = 6356583.8;  // metres
inline constexpr double kClarke1866InvF = kClarke1866A / (kClarke1866A - kClarke1866B);
inline constexpr double kUsSurveyFoot = 1200.0 / 3937;  // metres
inline constexpr double kArcSecondsPerRad = 3600 * kDegPerRad;

// The transverse Mercator and Lambert tables.
inline constexpr double kClarke1866E2 = 0.0067686580;   // ε
inline constexpr double kClarke1866Ep2 = 0.0068147849;  // ε/(1 − ε)
inline constexpr double kFeetPerRectifyingSecond = 101.2794065;
inline constexpr double kRectifyingSecondsPerFoot = 0.009873675553;

/// Rectifying latitude ω of Clarke 1866, arc-seconds, from the latitude in radians, its sine and its
/// cosine.
GEOMATH_INLINE double RectifyingLatitude1927(double phi, double s, double c) {
  const double c2 = c * c;
  return phi * kArcSecondsPerRad - (1052.893882 - (4.483344 - 0.023520 * c2) * c2) * s * c;
}

/// Latitude, radians, of a rectifying latitude in arc-seconds with its sine and cosine. The two undo
/// each other to 2e-5″, or 0.6 mm: the coefficients are printed that short.
GEOMATH_INLINE double LatitudeFromRectifying1927(double omegaSeconds, double s, double c) {
  const double c2 = c * c;
  return (omegaSeconds + (1047.546710 + (6.192760 + 0.050912 * c2) * c2) * s * c) *
         kRadPerArcSecond;
}
double LatitudeFromRectifying1927(double omegaSeconds);

}  // namespace zel_cs::geomath
