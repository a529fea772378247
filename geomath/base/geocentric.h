#pragma once

#include "geomath/base/ellipsoid.h"

namespace zel_cs::geomath {

/// When the fixed-point iteration for tan B ends.
struct TangentStop {
  double tolerance;  ///< absolute change of tan B at which it has settled
  int maxSteps;      ///< new values of tan B computed at most
  bool mustSettle;   ///< whether a point that has not settled by then is refused
};

/// In place, (X, Y, Z) to (B, L, H) by fixed-point iteration on tan B, the way that
/// Ellipsoid::XYZ_to_BLH describes. Reads a, e2 and ep2. False, with the arguments untouched, only
/// for a point that must settle and does not.
bool GeocentricToGeodetic(const Ellipsoid& ell, const TangentStop& stop, double& X, double& Y,
                          double& Z);

/// Sets the eccentricities e, e2, ep2 from the flattening f.
void DeriveEccentricities(Ellipsoid& ell);

}  // namespace zel_cs::geomath
