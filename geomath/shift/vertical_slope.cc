#include "geomath/shift/vertical_slope.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

VerticalSlope::VerticalSlope(const Ellipsoid& ellipsoid, const Parameters& parameters)
    : CoordinateShift(ShiftSpace::geographic), p_(parameters) {
  const double sinPhi0 = Sin(p_.latitude0);
  const double w2 = 1 - ellipsoid.e2 * sinPhi0 * sinPhi0, w = std::sqrt(w2);
  const double rho0 = ellipsoid.a * (1 - ellipsoid.e2) / (w2 * w), nu0 = ellipsoid.a / w;
  metresPerLatitude_ = p_.slopeLatitude * rho0;
  metresPerLongitude_ = p_.slopeLongitude * nu0;
}

// The longitude from the evaluation point, within half a turn.
double VerticalSlope::FromPoint(double l) const {
  const double turns = std::floor((l - p_.longitude0 + kPi) / kTwoPi);
  return l - p_.longitude0 - turns * kTwoPi;
}

double VerticalSlope::At(double b, double l) const {
  return p_.offset + metresPerLatitude_ * (b - p_.latitude0) +
         metresPerLongitude_ * FromPoint(l) * Cos(b);
}

void VerticalSlope::ForwardBlock(double* const (&point)[3], std::size_t count, ShiftStatus*) const {
  for (std::size_t i = 0; i < count; ++i) point[2][i] += At(point[0][i], point[1][i]);
}

void VerticalSlope::InverseBlock(double* const (&point)[3], std::size_t count, ShiftStatus*) const {
  for (std::size_t i = 0; i < count; ++i) point[2][i] -= At(point[0][i], point[1][i]);
}

ShiftStatus VerticalSlope::Differentiate(const double (&source)[3], double,
                                         double (&jacobian)[3][3]) const {
  jacobian[2][0] = metresPerLatitude_ - metresPerLongitude_ * FromPoint(source[1]) * Sin(source[0]);
  jacobian[2][1] = metresPerLongitude_ * Cos(source[0]);
  return ShiftStatus::converted;
}

}  // namespace zel_cs::geomath
