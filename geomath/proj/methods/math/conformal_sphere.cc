#include "geomath/proj/methods/math/conformal_sphere.h"

#include <cmath>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {

ConformalSphere::ConformalSphere(const Ellipsoid& ell, double normalLatitude)
    : R(ell.GetGaussianRadius(normalLatitude)), latitude_(ell) {
  const double sin0 = std::sin(normalLatitude), cos0 = std::cos(normalLatitude);
  const double cos4 = cos0 * cos0 * cos0 * cos0;
  alpha = std::sqrt(1 + ell.ep2 * cos4);
  chi0 = std::asin(sin0 / alpha);
  K = std::asinh(std::tan(chi0)) - alpha * latitude_.Isometric(sin0, cos0);
}

double ConformalSphere::Latitude(double phi) const {
  return std::atan(std::sinh(alpha * latitude_.Isometric(phi) + K));
}

double ConformalSphere::Geodetic(double chi) const {
  if (std::abs(chi) >= kHalfPi) return std::copysign(kHalfPi, chi);
  return Geodetic({std::sin(chi), std::cos(chi)});
}

bool ConformalSphere::Geodetic(SineCosine chi, double tolerance, int maxSteps, double& phi) const {
  return latitude_.FromIsometric(Isometric<simd::Libm>(chi), tolerance, maxSteps, phi);
}

}  // namespace zel_cs::geomath
