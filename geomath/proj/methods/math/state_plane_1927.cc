#include "geomath/proj/methods/math/state_plane_1927.h"

#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

double RectifyingLatitude1927(double phi) {
  const auto [s, c] = SinCos(phi);
  const double c2 = c * c;
  return phi * kArcSecondsPerRad - (1052.893882 - (4.483344 - 0.023520 * c2) * c2) * s * c;
}

double LatitudeFromRectifying1927(double omegaSeconds) {
  const double omega = omegaSeconds / kArcSecondsPerRad;
  const auto [s, c] = SinCos(omega);
  const double c2 = c * c;
  return (omegaSeconds + (1047.546710 + (6.192760 + 0.050912 * c2) * c2) * s * c) /
         kArcSecondsPerRad;
}

}  // namespace zel_cs::geomath
