#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/math/latitude.h"

namespace zel_cs::geomath {

/// Hotine's oblique Mercator on plain numbers (Hotine 1946-47; Snyder 1987, pp. 66-75, alternate B;
/// EPSG Guidance Note 7-2, methods 9812 and 9815): the ellipsoid onto the aposphere, and that onto
/// a cylinder along the great circle through a centre at a given azimuth. Radians and metres.
/// Constants are prepared by the constructor; conversions are const and allocate nothing.
///
/// Round trips close to 2e-15 rad away from the poles. Nothing fails: the two ends of the cylinder,
/// where |U| = 1, give infinite coordinates.
class Hotine {
 public:
  /// The central line: its azimuth α at the centre, the scale on it, and the centre.
  struct Line {
    double azimuth, k0, phiC, lambdaC;
  };
  /// Along the central line from the natural origin, and across it to its right.
  struct Skew {
    double u, v;
  };
  struct Geographic {
    double phi, lambda;
  };

  Hotine() = default;
  Hotine(const Ellipsoid& ell, const Line& line);

  /// The longitude difference is not folded. `scale`, when given, receives the point scale.
  Skew Forward(double phi, double lambda, double* scale = nullptr) const;
  /// The longitude is not folded. A point whose U′ rounds to ±1 is the pole, on the origin
  /// meridian; that is so within 7 cm of it.
  Geographic Inverse(Skew point, double* scale = nullptr) const;

  /// Point scale of the aposphere's upright cylinder, A·√(1 − e²·sin²φ)/(a·cos φ).
  double CylinderScale(double sinPhi, double cosPhi) const;

  double B = 1;          ///< ratio of aposphere to geodetic longitudes
  double A = 0;          ///< radius of the cylinder times B, metres
  double C = 0;          ///< constant of the isometric latitudes, ln Eh in Snyder's symbols
  double sinGamma0 = 0;  ///< azimuth of the central line on the aposphere's equator
  double cosGamma0 = 1;  ///< not negative
  double lambda0 = 0;    ///< longitude of the natural origin

 private:
  double a_ = 0, e2_ = 0;
  ConformalLatitude latitude_;
};

/// Hotine's projection with its skew coordinates turned into northing and easting:
///   N = u·cos θ − v·sin θ + N0,  E = u·sin θ + v·cos θ + E0.
/// What the oblique Mercator classes have in common: they differ in θ and in where their
/// parameters come from.
class HotineGrid {
 public:
  /// Turn by an angle, and false coordinates of the natural origin, metres.
  struct Placement {
    double sinTurn, cosTurn, fNorth, fEast;
  };

  HotineGrid() = default;
  HotineGrid(const Hotine& hotine, const Placement& placement);

  /// The point conversions of a projection class, in place. Always true.
  bool Forward(double& b, double& l, PointFactors* factors) const;
  bool Inverse(double& n, double& e, PointFactors* factors) const;

  /// Turns and shifts a skew point.
  void ToGrid(Hotine::Skew point, double& n, double& e) const;

  const Hotine& Projection() const { return hotine_; }

 private:
  Hotine::Skew ToSkew(double n, double e) const;

  Hotine hotine_;
  Placement placement_{0, 1, 0, 0};
};

}  // namespace zel_cs::geomath
