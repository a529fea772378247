#include "geomath/proj/procedural/azimuthal_equidistant.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/curvature.h"
#include "geomath/simd/scalar.h"

// Symbols of EPSG method 9832: ν nu, ψ psi latitude on the sphere about the foot of the normal of
// the origin, α alpha azimuth there, s arc on it, c length of the normal section.
namespace zel_cs::geomath {
namespace {

constexpr double kAlongMeridian = 1e-12;  // |sin α| below which the arc is read from the latitudes

}  // namespace

AzimuthalEquidistant::AzimuthalEquidistant(const Ellipsoid& ell, double phi0,
                                           const GridOrigin& origin)
    : a_(ell.a),
      e2_(ell.e2),
      origin_(origin),
      phi0_(phi0),
      sin0_(Sin(phi0)),
      cos0_(Cos(phi0)),
      nu0_(PrimeVerticalRadius(ell, phi0)) {}

bool AzimuthalEquidistant::ForwardPoint(double& b, double& l) const {
  const auto [sinPhi, cosPhi] = SinCos(b);
  const double nu = a_ / std::sqrt(1 - e2_ * (sinPhi * sinPhi));
  const double psi = Atan((1 - e2_) * sinPhi / cosPhi + e2_ * nu0_ * sin0_ / (nu * cosPhi));
  const double delta = SetValue(l - origin_.lambda0, 1);
  const auto [sinPsi, cosPsi] = SinCos(psi);
  const double alpha = Atan2(Sin(delta), cos0_ * sinPsi / cosPsi - sin0_ * Cos(delta));
  const auto [sinA, cosA] = SinCos(alpha);
  const double sinS = std::abs(sinA) < kAlongMeridian
                          ? std::copysign(1.0, cosA) * (cos0_ * sinPsi - sin0_ * cosPsi)
                          : Sin(delta) * cosPsi / sinA;
  if (std::abs(sinS) > 1) return false;

  const double s = Asin(sinS), s2 = s * s;
  const double g2 = e2_ * (sin0_ * sin0_) / (1 - e2_);
  const double h2 = e2_ * (cos0_ * cos0_) * (cosA * cosA) / (1 - e2_);
  const double gh = e2_ * sin0_ * cos0_ * cosA / (1 - e2_);
  const double c =
      nu0_ * s *
      (1 - s2 * h2 * (1 - h2) / 6 + s2 * s * gh * (1 - 2 * h2) / 8 +
       s2 * s2 * (h2 * (4 - 7 * h2) - 3 * g2 * (1 - 7 * h2)) / 120 - s2 * s2 * s * gh / 48);
  b = origin_.fNorth + c * cosA;
  l = origin_.fEast + c * sinA;
  return true;
}

bool AzimuthalEquidistant::InversePoint(double& n, double& e) const {
  const double x = e - origin_.fEast, y = n - origin_.fNorth;
  if (x == 0 && y == 0) {
    n = phi0_;
    e = origin_.lambda0;
    return true;
  }
  const double c = Hypot(x, y), sinA = x / c, cosA = y / c;
  const double A = -e2_ * (cos0_ * cos0_) * (cosA * cosA) / (1 - e2_);
  const double B = 3 * e2_ * (1 - A) * sin0_ * cos0_ * cosA / (1 - e2_);
  const double D = c / nu0_, D3 = D * D * D;
  const double J = D - A * (1 + A) * D3 / 6 - B * (1 + 3 * A) * D3 * D / 24;
  const double K = 1 - A * (J * J) / 2 - B * (J * J * J) / 6;

  const auto [sinJ, cosJ] = SinCos(J);
  const double sinPsi = sin0_ * cosJ + cos0_ * sinJ * cosA;
  if (std::abs(sinPsi) > 1) return false;
  const double cosPsi = std::sqrt((1 - sinPsi) * (1 + sinPsi));
  const double sinDelta = sinA * sinJ / cosPsi;
  if (std::abs(sinDelta) > 1) return false;
  n = Atan((sinPsi - e2_ * K * sin0_) / cosPsi / (1 - e2_));
  e = origin_.lambda0 + Asin(sinDelta);
  return true;
}

}  // namespace zel_cs::geomath
