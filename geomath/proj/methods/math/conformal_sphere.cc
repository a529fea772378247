#include "geomath/proj/methods/math/conformal_sphere.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/latitude.h"

namespace zel_cs::geomath {

ConformalSphere::ConformalSphere(const Ellipsoid& ell, double normalLatitude)
    : R(ell.GetGaussianRadius(normalLatitude)), e_(ell.e) {
  const double sin0 = std::sin(normalLatitude), cos0 = std::cos(normalLatitude);
  const double cos4 = cos0 * cos0 * cos0 * cos0;
  alpha = std::sqrt(1 + ell.ep2 * cos4);
  chi0 = std::asin(sin0 / alpha);
  K = std::asinh(std::tan(chi0)) - alpha * IsometricLatitude(sin0, cos0, e_);
}

ConformalSphere::SinCos ConformalSphere::Latitude(double sinPhi, double cosPhi) const {
  const double grow = std::exp(alpha * IsometricLatitude(sinPhi, cosPhi, e_) + K);
  const double decay = 1 / grow;
  return {(grow - decay) / (grow + decay), 2 / (grow + decay)};  // tanh and 1/cosh
}

double ConformalSphere::Latitude(double phi) const {
  return std::atan(std::sinh(alpha * IsometricLatitude(phi, e_) + K));
}

double ConformalSphere::Geodetic(double chi) const {
  if (std::abs(chi) >= kHalfPi) return std::copysign(kHalfPi, chi);
  return LatitudeFromIsometric((std::asinh(std::tan(chi)) - K) / alpha, e_);
}

}  // namespace zel_cs::geomath
