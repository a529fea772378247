#include "geomath/proj/methods/math/latitude.h"

#include <cmath>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {

double IsometricLatitude(double sinPhi, double cosPhi, double e) {
  return std::asinh(sinPhi / cosPhi) - e * std::atanh(e * sinPhi);
}

double IsometricLatitude(double phi, double e) {
  return IsometricLatitude(std::sin(phi), std::cos(phi), e);
}

double LatitudeFromIsometric(double psi, double e) {
  constexpr double kTolerance = 1e-14;  // radians
  constexpr int kMaxSteps = 50;
  double phi = std::atan(std::sinh(psi));
  for (int i = 0; i < kMaxSteps; ++i) {
    const double next = std::atan(std::sinh(psi + e * std::atanh(e * std::sin(phi))));
    const bool settled = std::abs(next - phi) < kTolerance;
    phi = next;
    if (settled) break;
  }
  return phi;
}

double ParallelRadius(double sinPhi, double cosPhi, double e2) {
  return cosPhi / std::sqrt(1 - e2 * (sinPhi * sinPhi));
}

double PrimeVerticalRadius(double sinPhi, const Ellipsoid& ell) {
  return ell.a / std::sqrt(1 - ell.e2 * (sinPhi * sinPhi));
}

double MeridianRadius(double sinPhi, const Ellipsoid& ell) {
  const double w2 = 1 - ell.e2 * (sinPhi * sinPhi);
  return ell.a * (1 - ell.e2) / (w2 * std::sqrt(w2));
}

}  // namespace zel_cs::geomath
