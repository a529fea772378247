#include "geomath/proj/methods/math/latitude.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

// The largest |n| for which the first neglected term of the series to n⁶, 50·n⁷, and that of the
// expansions in e²·sin²φ stay below 1e-16.
constexpr double kSeriesThirdFlattening = 0.0025;
constexpr int kLatitudeSteps = 20;

}  // namespace

double IsometricLatitude(double sinPhi, double cosPhi, double e) {
  return Asinh(sinPhi / cosPhi) - e * Atanh(e * sinPhi);
}

double IsometricLatitude(double phi, double e) {
  const auto [sinPhi, cosPhi] = SinCos(phi);
  return IsometricLatitude(sinPhi, cosPhi, e);
}

ConformalLatitude::ConformalLatitude(const Ellipsoid& ell)
    : e_(ell.e), e2_(ell.e2), nearSphere_(std::abs(ell.n) <= kSeriesThirdFlattening) {
  // Kawase 2011, Bulletin of the Geospatial Information Authority of Japan 59, eq. 8; the same as
  // Karney 2024, "On auxiliary latitudes", eq. A6.
  const double n = ell.n, n2 = n * n, n3 = n2 * n, n4 = n3 * n, n5 = n4 * n, n6 = n5 * n;
  toGeodetic_[0] =
      2 * n - 2.0 / 3 * n2 - 2 * n3 + 116.0 / 45 * n4 + 26.0 / 45 * n5 - 2854.0 / 675 * n6;
  toGeodetic_[1] =
      7.0 / 3 * n2 - 8.0 / 5 * n3 - 227.0 / 45 * n4 + 2704.0 / 315 * n5 + 2323.0 / 945 * n6;
  toGeodetic_[2] = 56.0 / 15 * n3 - 136.0 / 35 * n4 - 1262.0 / 105 * n5 + 73814.0 / 2835 * n6;
  toGeodetic_[3] = 4279.0 / 630 * n4 - 332.0 / 35 * n5 - 399572.0 / 14175 * n6;
  toGeodetic_[4] = 4174.0 / 315 * n5 - 144838.0 / 6237 * n6;
  toGeodetic_[5] = 601676.0 / 22275 * n6;
}

double ConformalLatitude::FlatExcess(double s) const { return e_ * Atanh(e_ * s); }

double ConformalLatitude::Isometric(double phi) const {
  const auto [sinPhi, cosPhi] = SinCos(phi);
  return Isometric(sinPhi, cosPhi);
}

// tan(π/4 + φ/2) ← tan(π/4 + χ/2)·exp(e·artanh(e·sin φ)), the addition theorem once more.
SineCosine ConformalLatitude::FixedPointStep(SineCosine chi, double sinPhi) const {
  const double T = TanhExcess<simd::Scalar>(sinPhi);
  const double divisor = 1 + T * chi.sin;
  return {(chi.sin + T) / divisor, chi.cos * std::sqrt(1 - T * T) / divisor};
}

double ConformalLatitude::FlatToGeodetic(SineCosine chi) const {
  SineCosine phi = chi;
  for (int i = 0; i < kLatitudeSteps; ++i) phi = FixedPointStep(chi, phi.sin);
  return Atan2(phi.sin, phi.cos);
}

bool ConformalLatitude::FromIsometric(double psi, double tolerance, int maxSteps,
                                      double& phi) const {
  const SineCosine chi = Gudermannian<simd::Scalar>(psi);
  if (nearSphere_) {
    phi = ToGeodetic(chi);
    return true;
  }
  phi = Atan2(chi.sin, chi.cos);
  for (int i = 0; i < maxSteps; ++i) {
    const SineCosine next = FixedPointStep(chi, Sin(phi));
    const double previous = phi;
    phi = Atan2(next.sin, next.cos);
    const double change = phi - previous;
    if (std::abs(change) <= tolerance) return true;
  }
  return false;
}

CosinePowerSeries ConformalSeries(double e2) {
  const double e4 = e2 * e2, e6 = e4 * e2, e8 = e4 * e4;
  return CosinePowerSeries(e2 / 2 + 5.0 / 24 * e4 + e6 / 12 + 13.0 / 360 * e8,
                           7.0 / 48 * e4 + 29.0 / 240 * e6 + 811.0 / 11520 * e8,
                           7.0 / 120 * e6 + 81.0 / 1120 * e8, 4279.0 / 161280 * e8);
}

}  // namespace zel_cs::geomath
