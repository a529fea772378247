#include "geomath/base/curvature.h"

#include <cmath>

#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

double MeridianRadius(const Ellipsoid& ellipsoid, double B) {
  const double sinB = Sin(B), w2 = 1 - ellipsoid.e2 * (sinB * sinB);
  return ellipsoid.a * (1 - ellipsoid.e2) / (w2 * std::sqrt(w2));
}

double PrimeVerticalRadius(const Ellipsoid& ellipsoid, double B) {
  const double sinB = Sin(B);
  return ellipsoid.a / std::sqrt(1 - ellipsoid.e2 * (sinB * sinB));
}

}  // namespace zel_cs::geomath
