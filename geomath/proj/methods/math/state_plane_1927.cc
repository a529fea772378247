#include "geomath/proj/methods/math/state_plane_1927.h"

#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

double LatitudeFromRectifying1927(double omegaSeconds) {
  const auto [s, c] = SinCos(omegaSeconds * kRadPerArcSecond);
  return LatitudeFromRectifying1927(omegaSeconds, s, c);
}

}  // namespace zel_cs::geomath
