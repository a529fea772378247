#include "geomath/shift/affine_transformation.h"

#include <algorithm>
#include <cmath>

namespace zel_cs::geomath {

void AffineTransformation::ForwardBlock(double* const (&point)[3], std::size_t count,
                                        ShiftStatus*) const {
  for (std::size_t i = 0; i < count; ++i) {
    const double north = point[0][i], east = point[1][i];
    point[0][i] = p_.b0 + p_.b1 * east + p_.b2 * north;
    point[1][i] = p_.a0 + p_.a1 * east + p_.a2 * north;
  }
}

void AffineTransformation::InverseBlock(double* const (&point)[3], std::size_t count,
                                        ShiftStatus* status) const {
  const double determinant = p_.a1 * p_.b2 - p_.a2 * p_.b1;
  if (!std::isfinite(1 / determinant)) std::fill_n(status, count, ShiftStatus::notInvertible);
  for (std::size_t i = 0; i < count; ++i) {
    const double north = point[0][i] - p_.b0, east = point[1][i] - p_.a0;
    point[0][i] = (p_.a1 * north - p_.b1 * east) / determinant;
    point[1][i] = (p_.b2 * east - p_.a2 * north) / determinant;
  }
}

void AffineTransformation::DifferentiateBlock(const double* const (&)[3], const double*,
                                              std::size_t count, double* const (&jacobian)[9],
                                              ShiftStatus*) const {
  std::fill_n(jacobian[0], count, p_.b2);
  std::fill_n(jacobian[1], count, p_.b1);
  std::fill_n(jacobian[3], count, p_.a2);
  std::fill_n(jacobian[4], count, p_.a1);
}

}  // namespace zel_cs::geomath
