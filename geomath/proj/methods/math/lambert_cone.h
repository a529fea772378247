#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/latitude.h"

namespace zel_cs::geomath {

/// The cone of the Lambert conformal conic projection through two parallels, or one (Snyder 1987,
/// pp. 107-109), on plain numbers. Points on it are polar coordinates about its apex:
///   ρ = aF·k0·exp(−n·ψ(φ)),  θ = n·Δλ,
/// ρ carrying the sign of the cone constant n, so that southern cones need no formula of their own.
/// Two parallels that are both the equator, or symmetric about it, make n = 0: results are then not
/// finite.
class LambertCone {
 public:
  /// A parallel by its latitude and that latitude's sine and cosine. A class whose sines and
  /// cosines wait for a refresh passes those it keeps.
  struct Parallel {
    double phi, sinPhi, cosPhi;
  };
  struct Polar {
    double rho;    ///< metres, signed as n
    double theta;  ///< radians, positive east
  };

  LambertCone() = default;
  LambertCone(const Ellipsoid& ell, const Parallel& south, const Parallel& north, double k0);
  LambertCone(const Ellipsoid& ell, double southLat, double northLat, double k0);

  /// Radius of a parallel, metres, signed as n; 0 at the apex.
  double Radius(double phi, double sinPhi) const;
  double Radius(double phi) const;

  /// Northing and easting, metres, of a point, counted from the origin on the parallel of radius
  /// `rho0`. False, nothing written, for a latitude of exactly ±π/2.
  ///
  /// `scale` and `convergence` (θ: radians, positive east of the meridian of origin in the northern
  /// hemisphere) are written when given.
  bool Forward(double phi, double deltaLambda, double rho0, double& north, double& east,
               double* scale, double* convergence) const;
  /// Latitude and longitude difference, radians, of a grid point, the latter within π/n; the
  /// factors there when asked for.
  void Inverse(double north, double east, double rho0, double& phi, double& deltaLambda,
               double* scale, double* convergence) const;
  /// The same of a point by its polar coordinates.
  void Inverse(const Polar& at, double& phi, double& deltaLambda, double* scale) const;

  double n() const { return n_; }

 private:
  double Scale(double rho, double sinPhi, double cosPhi) const;

  double a_ = 0, e_ = 0, e2_ = 0;
  double n_ = 0;   // cone constant
  double aF_ = 0;  // a·F·k0, metres
  ConformalLatitude latitude_;
};

}  // namespace zel_cs::geomath
