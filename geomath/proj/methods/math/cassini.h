#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/meridian_series.h"

namespace zel_cs::geomath {

/// Cassini-Soldner on plain numbers (EPSG Guidance Note 7-2, method 9806; Snyder 1987, p. 95),
/// metres from the origin, without false coordinates, on axes that are turned: the projection's
/// north axis points in grid azimuth `axisAzimuth`, the sense of the general oblique Mercator. At
/// azimuth 0 it is the plain projection.
///
/// Both directions are truncated series: a round trip closes to 0.2 mm within 1° of the central
/// meridian, 3.3 mm within 2° and 18 mm within 3°, at the worst latitude. Nothing fails; at the
/// poles results are not finite. Radians.
class CassiniSoldner {
 public:
  struct Geographic {
    double phi, lambda;
  };
  struct Plane {
    double north, east;
  };

  CassiniSoldner(const Ellipsoid& ell, double lat0, double lon0, double axisAzimuth);

  /// The longitude difference is folded into [−π, π].
  Plane Forward(double phi, double lambda) const;
  /// The longitude is not folded.
  Geographic Inverse(double north, double east) const;

 private:
  double a_, e2_, ep2_, lambda0_;
  MeridianSeries meridian_;
  double m0_;                   // meridian arc of the origin, metres
  double sinTheta_, cosTheta_;  // of the axis azimuth
};

}  // namespace zel_cs::geomath
