#pragma once

#include "geomath/platform/zel_math.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// The seven-parameter similarity between the geocentric frames of a local datum and WGS84, with
/// its matrix prepared:
///   WGS84 = T + (1 + s)·Rᵀ·local      local = R·(WGS84 − T)/(1 + s)
/// R = Rx(rX)·Ry(rY)·Rz(rZ) is the exact product of the elementary rotations, not the small-angle
/// matrix; rotation values count in the coordinate-frame sense for local → WGS84 (EPSG method
/// 1032), that is in the position-vector sense for WGS84 → local.
/// Lengths in metres, angles in radians, s dimensionless.
class Similarity {
 public:
  Similarity() : Similarity({0, 0, 0}, {0, 0, 0}, 0) {}
  Similarity(const TAbstractPoint3<double>& shift, const TAbstractPoint3<double>& angles,
             double scale);

  TAbstractPoint3<double> ToLocal(const TAbstractPoint3<double>& wgs84) const;
  TAbstractPoint3<double> ToWgs84(const TAbstractPoint3<double>& local) const;

  /// In place, for one point of a column; batches and single points share these statements.
  GEOMATH_INLINE void ToLocal(double& x, double& y, double& z) const {
    const double dx = x - tX_, dy = y - tY_, dz = z - tZ_;
    x = (r_[0][0] * dx + r_[0][1] * dy + r_[0][2] * dz) / factor_;
    y = (r_[1][0] * dx + r_[1][1] * dy + r_[1][2] * dz) / factor_;
    z = (r_[2][0] * dx + r_[2][1] * dy + r_[2][2] * dz) / factor_;
  }
  GEOMATH_INLINE void ToWgs84(double& x, double& y, double& z) const {
    const double u = x, v = y, w = z;
    x = tX_ + (r_[0][0] * u + r_[1][0] * v + r_[2][0] * w) * factor_;
    y = tY_ + (r_[0][1] * u + r_[1][1] * v + r_[2][1] * w) * factor_;
    z = tZ_ + (r_[0][2] * u + r_[1][2] * v + r_[2][2] * w) * factor_;
  }

 private:
  double tX_, tY_, tZ_;
  double r_[3][3];
  double factor_;  // 1 + s
};

}  // namespace zel_cs::geomath
