#include "geomath/proj/methods/math/lambert_cone.h"

#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/simd/scalar.h"

// Equation numbers are Snyder 1987. His t(φ) is exp(−ψ(φ)); ψ is odd in φ and keeps its digits at
// the equator and near both poles, where a tangent of π/4 − φ/2 loses them.
namespace zel_cs::geomath {
namespace {

// −ln t(φ), 15-9, with the sine of the eccentric term given apart; infinite at the poles.
double IsometricOf(double phi, double sinPhi, double e) {
  if (std::abs(phi) == kHalfPi) return std::copysign(std::numeric_limits<double>::infinity(), phi);
  return IsometricLatitude(phi, 0) - e * Atanh(e * sinPhi);
}

LambertCone::Parallel ParallelAt(double phi) {
  const auto [sinPhi, cosPhi] = SinCos(phi);
  return {phi, sinPhi, cosPhi};
}

}  // namespace

LambertCone::LambertCone(const Ellipsoid& ell, const Parallel& south, const Parallel& north,
                         double k0)
    : a_(ell.a), e_(ell.e), e2_(ell.e2), n_(north.sinPhi), latitude_(ell) {
  const double mN = ParallelRadius(north.sinPhi, north.cosPhi, e2_);  // 14-15
  const double psiN = IsometricOf(north.phi, north.sinPhi, e_);       // 15-9
  if (north.phi != south.phi) {
    const double mS = ParallelRadius(south.sinPhi, south.cosPhi, e2_);
    const double psiS = IsometricOf(south.phi, south.sinPhi, e_);
    n_ = (Log(mN) - Log(mS)) / (psiS - psiN);  // 15-8
  }
  aF_ = a_ * mN / n_ * Exp(n_ * psiN) * k0;  // 15-10

  constexpr double kLeastRadius = 1, kLargestRadius = 1e20;  // metres
  const double radius = std::abs(aF_);
  servesColumns_ = latitude_.ServesColumns() && n_ != 0 && std::abs(n_) <= 1 &&
                   radius > kLeastRadius && radius < kLargestRadius;
}

LambertCone::LambertCone(const Ellipsoid& ell, double southLat, double northLat, double k0)
    : LambertCone(ell, ParallelAt(southLat), ParallelAt(northLat), k0) {}

double LambertCone::Radius(double phi) const { return Radius(phi, Sin(phi)); }

double LambertCone::Radius(double phi, double sinPhi) const {
  return aF_ * Exp(-n_ * IsometricOf(phi, sinPhi, e_));  // 15-7a
}

double LambertCone::Scale(double rho, double sinPhi, double cosPhi) const {
  return n_ * rho / (a_ * ParallelRadius(sinPhi, cosPhi, e2_));  // 15-6
}

}  // namespace zel_cs::geomath
