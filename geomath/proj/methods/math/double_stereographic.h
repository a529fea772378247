#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/conformal_sphere.h"

namespace zel_cs::geomath {

/// The oblique ("double") stereographic projection on plain numbers, without false origin: the
/// ellipsoid onto the Gaussian conformal sphere of the origin, the sphere stereographically onto
/// the plane from the antipode of the origin (EPSG method 9809; Snyder 1987, p. 160).
class DoubleStereographic {
 public:
  DoubleStereographic() = default;
  DoubleStereographic(const Ellipsoid& ell, double lat0, double lon0, double scale);

  /// Northing and easting, metres, of a point; not finite at the antipode of the origin.
  /// Longitudes are not folded.
  ///
  /// `scale` and `convergence` (radians, positive east of the meridian of origin in the northern
  /// hemisphere) are written when given. Kept: the scale takes the prime-vertical radius of the
  /// origin latitude; it is exact there and up to 0.34 % away from it (the radius of the poles
  /// against that of the equator).
  void Forward(double phi, double lambda, double& north, double& east, double* scale,
               double* convergence) const;
  /// Latitude and longitude of a grid point, and the factors there. The origin for (0, 0).
  void Inverse(double north, double east, double& phi, double& lambda, double* scale,
               double* convergence) const;

 private:
  struct SpherePoint {
    SinCos chi;
    SinCos Lambda;
  };
  double Denominator(const SpherePoint& at) const;
  double ScaleAt(const SpherePoint& at, double cosPhi) const;
  double ConvergenceAt(const SpherePoint& at) const;

  ConformalSphere sphere_;
  double phi0_ = 0, lambda0_ = 0;
  double sinChi0_ = 0, cosChi0_ = 1;
  double diameter_ = 0;       // 2·k0·R, metres
  double scaleAtOrigin_ = 0;  // 2·k0·n·R/ν0
};

}  // namespace zel_cs::geomath
