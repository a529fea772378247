#include "geomath/shift/small_angle_similarity.h"

#include <algorithm>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {

// With K = [r]×, K·r = 0 and K² = r·rᵀ − |r|²·I:
//   (I + K)·(I + r·rᵀ − K) = (1 + |r|²)·I,
// so that the inverse of (1 + s)·(I + K) is (I + r·rᵀ − K)/q, q = (1 + s)·(1 + |r|²).
SmallAngleSimilarity::SmallAngleSimilarity(const TAbstractPoint3<double>& shift,
                                           const TAbstractPoint3<double>& rotation,
                                           const TAbstractPoint3<double>& pivot, double scale,
                                           RotationSense sense)
    : CoordinateShift(ShiftSpace::geocentric) {
  const double sign = sense == RotationSense::positionVector ? 1 : -1;
  const double r[] = {sign * rotation[0] * kRadPerArcSecond, sign * rotation[1] * kRadPerArcSecond,
                      sign * rotation[2] * kRadPerArcSecond};
  const double K[3][3] = {{0, -r[2], r[1]}, {r[2], 0, -r[0]}, {-r[1], r[0], 0}};
  const double r2 = r[0] * r[0] + r[1] * r[1] + r[2] * r[2];
  const double qMinus1 = scale + r2 + scale * r2, q = (1 + scale) * (1 + r2);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const double unit = i == j ? 1 : 0;
      forward_.m[i][j] = scale * unit + (1 + scale) * K[i][j];
      inverse_.m[i][j] = (r[i] * r[j] - K[i][j] - qMinus1 * unit) / q;
    }
    forward_.centre[i] = pivot[i];
    forward_.shift[i] = shift[i];
    inverse_.centre[i] = pivot[i] + shift[i];
    inverse_.shift[i] = -shift[i];
  }
}

void SmallAngleSimilarity::Map::Convert(double* const (&point)[3], std::size_t count) const {
  const Map map = *this;  // plain numbers that no column can alias
  for (std::size_t i = 0; i < count; ++i) {
    const double x = point[0][i] - map.centre[0], y = point[1][i] - map.centre[1];
    const double z = point[2][i] - map.centre[2];
    for (int c = 0; c < 3; ++c)
      point[c][i] += map.m[c][0] * x + map.m[c][1] * y + map.m[c][2] * z + map.shift[c];
  }
}

void SmallAngleSimilarity::ForwardBlock(double* const (&point)[3], std::size_t count,
                                        ShiftStatus*) const {
  forward_.Convert(point, count);
}

void SmallAngleSimilarity::InverseBlock(double* const (&point)[3], std::size_t count,
                                        ShiftStatus*) const {
  inverse_.Convert(point, count);
}

void SmallAngleSimilarity::DifferentiateBlock(const double* const (&)[3], const double*,
                                              std::size_t count, double* const (&jacobian)[9],
                                              ShiftStatus*) const {
  for (int k = 0; k < 9; ++k) {
    const double unit = k % 4 == 0 ? 1 : 0;
    std::fill_n(jacobian[k], count, unit + forward_.m[k / 3][k % 3]);
  }
}

}  // namespace zel_cs::geomath
