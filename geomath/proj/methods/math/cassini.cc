#include "geomath/proj/methods/math/cassini.h"

#include <cmath>

#include "geomath/base/angle.h"

// Symbols of EPSG method 9806, its x and y being the plane's east and north before they are turned:
//   A Δλ·cos φ   T tan²φ   C e′²·cos²φ   ν nu   ρ rho   M0 m0_   D x/ν1   index 1: at the footpoint
namespace zel_cs::geomath {

CassiniSoldner::CassiniSoldner(const Ellipsoid& ell, double lat0, double lon0, double axisAzimuth)
    : a_(ell.a),
      e2_(ell.e2),
      ep2_(ell.ep2),
      lambda0_(lon0),
      meridian_(ell),
      m0_(meridian_.Arc(lat0)),
      sinTheta_(std::sin(axisAzimuth)),
      cosTheta_(std::cos(axisAzimuth)) {}

CassiniSoldner::Plane CassiniSoldner::Forward(double phi, double lambda) const {
  const double s = std::sin(phi), c = std::cos(phi), t = s / c;
  const double A = SetValue(lambda - lambda0_, 1) * c, A2 = A * A;
  const double T = t * t, C = ep2_ * (c * c);
  const double nu = a_ / std::sqrt(1 - e2_ * (s * s));
  const double x = nu * A * (1 - T * A2 * (1.0 / 6 + (8 - T + 8 * C) * A2 / 120));
  const double y =
      meridian_.Arc(phi, s, c) - m0_ + nu * t * A2 * (1.0 / 2 + (5 - T + 6 * C) * A2 / 24);
  return {y * cosTheta_ - x * sinTheta_, y * sinTheta_ + x * cosTheta_};
}

CassiniSoldner::Geographic CassiniSoldner::Inverse(double north, double east) const {
  const double x = east * cosTheta_ - north * sinTheta_;
  const double y = north * cosTheta_ + east * sinTheta_;
  const double phi1 = meridian_.Footpoint(m0_ + y);
  const double s = std::sin(phi1), c = std::cos(phi1), t = s / c;
  const double T1 = t * t, w2 = 1 - e2_ * (s * s);
  const double D = x * std::sqrt(w2) / a_, D2 = D * D;
  const double nuOverRho = w2 / (1 - e2_);
  const double phi = phi1 - nuOverRho * t * D2 * (1.0 / 2 - (1 + 3 * T1) * D2 / 24);
  const double lambda = lambda0_ + D * (1 - T1 * D2 * (1.0 / 3 - (1 + 3 * T1) * D2 / 15)) / c;
  return {phi, lambda};
}

}  // namespace zel_cs::geomath
