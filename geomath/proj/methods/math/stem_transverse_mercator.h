#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/meridian_series.h"

namespace zel_cs::geomath {

struct PointFactors;

/// Transverse Mercator of the 1983 state plane zones on plain numbers, both ways with point scale
/// and convergence (Stem 1989, NOAA Manual NOS NGS 5, pp. 32-37): metres from the grid's true
/// origin, longitudes as differences from the central meridian, which must be folded; the
/// inverse does not fold them. The arc keeps all its terms. Survives a sphere.
///
/// Against an exact transverse Mercator: forward 0.02 mm within 3° of the meridian and 0.9 mm
/// within 6°, inverse 0.01 mm and 2 mm. Nothing fails.
class StemTransverseMercator {
 public:
  struct Geographic {
    double phi, deltaLambda;
  };
  struct Plane {
    double north, east;
  };

  /// Scale on the central meridian and latitude of the origin, radians.
  StemTransverseMercator(const Ellipsoid& ell, double scale, double lat0);

  /// `factors`, when given, receives point scale and convergence.
  Plane Forward(double phi, double deltaLambda, PointFactors* factors) const;
  Geographic Inverse(double north, double east, PointFactors* factors) const;

 private:
  double e2_, ep2_, k0_;
  MeridianSeries meridian_;
  double aK0_;     // scaled semi-major axis, metres
  double origin_;  // scaled arc of the origin, metres
};

}  // namespace zel_cs::geomath
