#pragma once

#include <cstddef>
#include <vector>

#include "files/system/system_file.h"

namespace geomath_files::program {

/// Scale, convergence and combined factor of a system's local coordinates at positions.
///
/// They are those of the coordinates as the chain gives them, site calibration and ground system
/// included, by differences of the chain itself over 64 m either way: one definition and one sign for
/// every projection, good to 1e-10. The scale is that of lengths on the ellipsoid of the projection
/// (where it depends on the direction, the root of the areal scale), the convergence the angle from
/// the northing axis to true north, positive where grid north lies east of true north: a bearing
/// in the grid and the convergence add up to the true bearing. The combined factor is that of
/// lengths at the height of the point: the scale reduced by R / (R + h) along both principal
/// directions.
class GridFactors {
 public:
  /// The system stays the caller's.
  explicit GridFactors(const CoordinateSystem& system);

  /// Fills the factors of `count` global positions, latitude and longitude in radians as the
  /// system counts them, height in metres; the convergence in radians. NaN where a point and its surroundings have none.
  void Compute(const double* latitude, const double* longitude, const double* height,
               std::size_t count);

  const std::vector<double>& Scale() const { return scale_; }
  const std::vector<double>& Convergence() const { return convergence_; }
  const std::vector<double>& Combined() const { return combined_; }

 private:
  /// Northings and eastings of points that stand beside those on the ellipsoid, radians away.
  struct Plane {
    std::vector<double> north, east;
  };
  void Beside(double dLatitude, double dLongitude, Plane& to);

  zel_cs::geomath::CoordinateChain toEllipsoid_, toPlane_;
  zel_cs::geomath::Ellipsoid ellipsoid_;
  AxisPair geographic_, grid_;
  std::vector<double> b_, l_, h_, scratch_;
  std::vector<double> scale_, convergence_, combined_;
};

}  // namespace geomath_files::program
