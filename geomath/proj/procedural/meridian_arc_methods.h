#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/meridian_series.h"

namespace zel_cs::geomath {

// Projections that are built on the true length of the meridian arc. All convert in place on
// internal axes, (latitude, longitude) to (northing, easting), radians and metres; longitude
// differences are folded on the way in, longitudes are not folded on the way out. ForwardPoint is
// always true unless said otherwise; InversePoint is false for a pair whose arc passes a pole.
// Within 1e-12 rad of a pole the inverse gives the pole itself, on the origin meridian where the
// pole is a point of the map. Const, without allocation.

/// Origin meridian and false origin of a grid.
struct GridOrigin {
  double lambda0;        // radians
  double fEast, fNorth;  // metres
};

/// Parallels as concentric arcs about a point of the central meridian, counted from the parallel
/// through the origin; both directions stay exact while that point moves away to infinity.
class ConcentricArcs {
 public:
  struct Polar {
    double rho, theta;  // signed radius, metres; angle at the apex
    double along;       // rho0 − rho, metres
  };

  /// `rho0` is the signed radius of the origin's parallel, positive with the apex in the north.
  explicit ConcentricArcs(double rho0) : rho0_(rho0) {}

  double Radius(double along) const { return rho0_ - along; }
  void ToPlane(double along, double theta, double& north, double& east) const;
  Polar FromPlane(double north, double east) const;

 private:
  double rho0_;
};

/// Bonne's equal-area pseudoconic projection (Snyder 1987, p. 140). With the standard parallel on
/// the equator it is the sinusoidal projection.
class Bonne {
 public:
  Bonne(const Ellipsoid& ell, double phi1, const GridOrigin& origin);
  bool ForwardPoint(double& b, double& l) const;
  bool InversePoint(double& n, double& e) const;

 private:
  double ParallelLength(double phi) const;  // of one radian of longitude, metres

  double a_, e2_;
  MeridianSeries series_;
  GridOrigin origin_;
  double arc1_;  // arc of the standard parallel, metres
  bool conic_;   // false on the equator, where the arcs are straight
  ConcentricArcs arcs_;
};

/// Equidistant conic of two standard parallels (Snyder 1987, p. 114), or of one where they are
/// equal. Parallels that lie symmetric to the equator have no cone: both directions are then false.
class EquidistantConic {
 public:
  struct Cone {
    double phi1, phi2, phi0;  // standard parallels, latitude of origin
  };
  EquidistantConic(const Ellipsoid& ell, const Cone& cone, const GridOrigin& origin);
  bool ForwardPoint(double& b, double& l) const;
  bool InversePoint(double& n, double& e) const;

 private:
  double ConeConstant(const Ellipsoid& ell, const Cone& cone) const;

  MeridianSeries series_;
  GridOrigin origin_;
  double arc0_;  // arc of the latitude of origin, metres
  double n_;     // cone constant
  ConcentricArcs arcs_;
};

/// Equidistant cylindrical projection (EPSG Guidance Note 7-2, method 1028).
class EquidistantCylinder {
 public:
  EquidistantCylinder(const Ellipsoid& ell, double phi1, const GridOrigin& origin);
  bool ForwardPoint(double& b, double& l) const;
  bool InversePoint(double& n, double& e) const;

 private:
  MeridianSeries series_;
  GridOrigin origin_;
  double metresPerRadian_;  // of longitude
};

}  // namespace zel_cs::geomath
