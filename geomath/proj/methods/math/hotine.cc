#include "geomath/proj/methods/math/hotine.h"

#include <cmath>

#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kRightAngle = 1e-15;  // how close |sin α| comes to 1 for an azimuth of ±90°

}  // namespace

Hotine::Hotine(const Ellipsoid& ell, const Line& line) : a_(ell.a), e2_(ell.e2), latitude_(ell) {
  const auto [sinC, cosC] = SinCos(line.phiC);
  const auto [sinA, cosA] = SinCos(line.azimuth);
  const double w2 = 1 - e2_ * (sinC * sinC), cos2 = cosC * cosC;
  const double axes = std::sqrt(1 - e2_);

  B = std::sqrt(1 + ell.ep2 * (cos2 * cos2));  // 9-11
  A = a_ * B * line.k0 * axes / w2;            // 9-12

  // ±√(D² − 1) with the sign of φc (9-14, 9-35), from the identity
  // D² − 1 = (1 − e²)·tan²φc/(1 − e²·sin²φc), so that D is never below 1.
  const double G = axes * sinC / (cosC * std::sqrt(w2));
  const double D = std::sqrt(1 + G * G);
  C = Asinh(G) - B * latitude_.Isometric(sinC, cosC);  // 9-36
  sinGamma0 = sinA / D;                                // 9-37
  cosGamma0 = std::sqrt(G * G + cosA * cosA) / D;

  // asin(G·tan γ0), 9-38. Kept: at azimuth ±90° it counts as +π/2 whatever the hemisphere.
  const bool rightAngle = std::abs(std::abs(sinA) - 1) < kRightAngle;
  const double toOrigin = rightAngle ? kHalfPi : Atan2(G * sinA, D * std::abs(cosA));
  lambda0 = line.lambdaC - toOrigin / B;
}

double Hotine::CylinderScale(double sinPhi, double cosPhi) const {
  return A * std::sqrt(1 - e2_ * (sinPhi * sinPhi)) / (a_ * cosPhi);
}

}  // namespace zel_cs::geomath
