#pragma once

namespace zel_cs::geomath {

/// What a projection says about one point beside its coordinates. A class that does not compute
/// one of the two leaves it as it was.
struct PointFactors {
  double scale = 1.0;        ///< point scale factor
  double convergence = 0.0;  ///< meridian convergence, radians; a class's comment gives its sign
};

/// The derivatives of northing and easting by latitude and longitude at a point, metres a radian.
struct GridDerivatives {
  double northB;  ///< of the northing by the latitude
  double eastB;   ///< of the easting by the latitude
  double northL;  ///< of the northing by the longitude
  double eastL;   ///< of the easting by the longitude
};

}  // namespace zel_cs::geomath
