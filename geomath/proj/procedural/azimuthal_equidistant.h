#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/procedural/meridian_arc_methods.h"

namespace zel_cs::geomath {

/// Modified azimuthal equidistant projection (EPSG Guidance Note 7-2, method 9832; Snyder 1987
/// gives it for the islands of Micronesia): azimuth and length of the normal section from the
/// origin, good for some 300 km around it. In place on internal axes, radians and metres. False for
/// points so far away that the spherical triangle of either direction has no solution.
class AzimuthalEquidistant {
 public:
  AzimuthalEquidistant(const Ellipsoid& ell, double phi0, const GridOrigin& origin);
  bool ForwardPoint(double& b, double& l) const;
  bool InversePoint(double& n, double& e) const;

 private:
  double a_, e2_;
  GridOrigin origin_;
  double phi0_, sin0_, cos0_;
  double nu0_;  // radius of curvature in the prime vertical at the origin, metres
};

}  // namespace zel_cs::geomath
