#include "geomath/proj/methods/math/conformal_sphere.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

ConformalSphere::ConformalSphere(const Ellipsoid& ell, double normalLatitude)
    : R(ell.GetGaussianRadius(normalLatitude)), latitude_(ell) {
  const auto [sin0, cos0] = SinCos(normalLatitude);
  const double cos4 = cos0 * cos0 * cos0 * cos0;
  alpha = std::sqrt(1 + ell.ep2 * cos4);
  chi0 = Asin(sin0 / alpha);
  K = Asinh(Tan(chi0)) - alpha * latitude_.Isometric(sin0, cos0);
}

double ConformalSphere::Latitude(double phi) const {
  return Atan(Sinh(alpha * latitude_.Isometric(phi) + K));
}

double ConformalSphere::Geodetic(double chi) const {
  if (std::abs(chi) >= kHalfPi) return std::copysign(kHalfPi, chi);
  return Geodetic(SinCos(chi));
}

bool ConformalSphere::Geodetic(SineCosine chi, double tolerance, int maxSteps, double& phi) const {
  return latitude_.FromIsometric(Isometric<simd::Scalar>(chi), tolerance, maxSteps, phi);
}

}  // namespace zel_cs::geomath
