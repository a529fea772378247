#pragma once

#include "geomath/base/angle.h"

namespace zel_cs::geomath {

/// The domain that projections along a central meridian report, radians: all latitudes, 9° to each
/// side of the meridian. Always true.
inline bool TransverseCentralPoint(double lambda0, double& b0, double& l0, double& db, double& dl) {
  b0 = 0;
  l0 = lambda0;
  db = kHalfPi;
  dl = kPi / 20;
  return true;
}

/// The domain that projections about a centre report, radians: just short of 45° to each side of it
/// in latitude and longitude. Always true.
inline bool ObliqueCentralPoint(double phi0, double lambda0, double& b0, double& l0, double& db,
                                double& dl) {
  b0 = phi0;
  l0 = lambda0;
  db = dl = kPi / 4 - 1e-6;
  return true;
}

/// The domain that conic projections report, radians: all latitudes, just short of 90° to each side
/// of the meridian of origin. Always true.
inline bool ConicCentralPoint(double phi0, double lambda0, double& b0, double& l0, double& db,
                              double& dl) {
  b0 = phi0;
  l0 = lambda0;
  db = kPi;
  dl = kHalfPi - 1e-6;
  return true;
}

}  // namespace zel_cs::geomath
