#include "geomath/shift/vertical_slope.h"

#include <cmath>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {

VerticalSlope::VerticalSlope(const Ellipsoid& ellipsoid, const Parameters& parameters)
    : CoordinateShift(ShiftSpace::geographic), p_(parameters) {
  const double sinPhi0 = std::sin(p_.latitude0);
  const double w2 = 1 - ellipsoid.e2 * sinPhi0 * sinPhi0, w = std::sqrt(w2);
  const double rho0 = ellipsoid.a * (1 - ellipsoid.e2) / (w2 * w), nu0 = ellipsoid.a / w;
  metresPerLatitude_ = p_.slopeLatitude * rho0;
  metresPerLongitude_ = p_.slopeLongitude * nu0;
}

double VerticalSlope::At(double b, double l) const {
  const double turns = std::floor((l - p_.longitude0 + kPi) / kTwoPi);
  const double fromPoint = l - p_.longitude0 - turns * kTwoPi;
  return p_.offset + metresPerLatitude_ * (b - p_.latitude0) +
         metresPerLongitude_ * fromPoint * std::cos(b);
}

void VerticalSlope::ForwardBlock(double* const (&point)[3], std::size_t count, ShiftStatus*) const {
  for (std::size_t i = 0; i < count; ++i) point[2][i] += At(point[0][i], point[1][i]);
}

void VerticalSlope::InverseBlock(double* const (&point)[3], std::size_t count, ShiftStatus*) const {
  for (std::size_t i = 0; i < count; ++i) point[2][i] -= At(point[0][i], point[1][i]);
}

}  // namespace zel_cs::geomath
