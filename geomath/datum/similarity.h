#pragma once

#include "geomath/platform/zel_math.h"

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

 private:
  TAbstractPoint3<double> shift_;
  TAbstractPoint3<double> rows_[3];     // of R
  TAbstractPoint3<double> columns_[3];  // of R: the rows of its transpose
  double factor_;                       // 1 + s
};

}  // namespace zel_cs::geomath
