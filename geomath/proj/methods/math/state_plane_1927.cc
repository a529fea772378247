#include "geomath/proj/methods/math/state_plane_1927.h"

#include <cmath>

namespace zel_cs::geomath {

double RectifyingLatitude1927(double phi) {
  const double s = std::sin(phi), c = std::cos(phi), c2 = c * c;
  return phi * kArcSecondsPerRad - (1052.893882 - (4.483344 - 0.023520 * c2) * c2) * s * c;
}

double LatitudeFromRectifying1927(double omegaSeconds) {
  const double omega = omegaSeconds / kArcSecondsPerRad;
  const double s = std::sin(omega), c = std::cos(omega), c2 = c * c;
  return (omegaSeconds + (1047.546710 + (6.192760 + 0.050912 * c2) * c2) * s * c) /
         kArcSecondsPerRad;
}

}  // namespace zel_cs::geomath
