#pragma once

#include <cstddef>

#include "geomath/platform/zel_math.h"
#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// p ↦ R·(p − T)/(1 + s) of a Similarity, in place. What it adds to p is small: only the last sum
/// rounds it.
struct Wgs84ToLocal {
  static constexpr std::size_t kColumns = 3;
  double tX, tY, tZ;
  double m[3][3];  // R/(1 + s) − I

  template <class Math>
  GEOMATH_INLINE void Convert(double& x, double& y, double& z) const {
    const double dx = x - tX, dy = y - tY, dz = z - tZ;
    x += m[0][0] * dx + m[0][1] * dy + m[0][2] * dz - tX;
    y += m[1][0] * dx + m[1][1] * dy + m[1][2] * dz - tY;
    z += m[2][0] * dx + m[2][1] * dy + m[2][2] * dz - tZ;
  }
};

/// p ↦ T + (1 + s)·Rᵀ·p, likewise.
struct LocalToWgs84 {
  static constexpr std::size_t kColumns = 3;
  double tX, tY, tZ;
  double m[3][3];  // (1 + s)·Rᵀ − I

  template <class Math>
  GEOMATH_INLINE void Convert(double& x, double& y, double& z) const {
    const double u = x, v = y, w = z;
    x += m[0][0] * u + m[0][1] * v + m[0][2] * w + tX;
    y += m[1][0] * u + m[1][1] * v + m[1][2] * w + tY;
    z += m[2][0] * u + m[2][1] * v + m[2][2] * w + tZ;
  }
};

/// The seven-parameter similarity between the geocentric frames of a local datum and WGS84, with
/// its matrices prepared:
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

  /// The same for columns.
  const Wgs84ToLocal& ColumnsToLocal() const { return toLocal_; }
  const LocalToWgs84& ColumnsToWgs84() const { return toWgs84_; }

 private:
  Wgs84ToLocal toLocal_;
  LocalToWgs84 toWgs84_;
};

}  // namespace zel_cs::geomath
