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

SinCos ConformalSphere::Latitude(double sinPhi, double cosPhi) const {
  const double psi = alpha * latitude_.Isometric(sinPhi, cosPhi) + K;
  const double decay = std::exp(-std::abs(psi)), decay2 = decay * decay;
  return {std::copysign((1 - decay2) / (1 + decay2), psi),  // tanh ψ
          2 * decay / (1 + decay2)};                        // 1/cosh ψ
}

double ConformalSphere::Latitude(double phi) const {
  return std::atan(std::sinh(alpha * latitude_.Isometric(phi) + K));
}

double ConformalSphere::Geodetic(double chi) const {
  if (std::abs(chi) >= kHalfPi) return std::copysign(kHalfPi, chi);
  return Geodetic({std::sin(chi), std::cos(chi)});
}

// The isometric latitude on the ellipsoid of a spherical latitude.
double ConformalSphere::Isometric(SinCos chi) const {
  const double psi = std::copysign(std::log((1 + std::abs(chi.sin)) / chi.cos), chi.sin);
  return (psi - K) / alpha;
}

double ConformalSphere::Geodetic(SinCos chi) const {
  return latitude_.FromIsometric(Isometric(chi));
}

bool ConformalSphere::Geodetic(SinCos chi, double tolerance, int maxSteps, double& phi) const {
  return latitude_.FromIsometric(Isometric(chi), tolerance, maxSteps, phi);
}

}  // namespace zel_cs::geomath
