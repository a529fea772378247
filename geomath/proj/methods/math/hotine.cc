#include "geomath/proj/methods/math/hotine.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/hyperbolic.h"

// Equation numbers are Snyder 1987. His Q, S, T, V, U are written with the isometric latitude ψ:
//   Q = E/t^B = exp(B·ψ + C), C = ln E;  S = sinh(B·ψ + C), T = cosh(B·ψ + C);  V = sin(B·Δλ)
// and along = S·cos γ0 + V·sin γ0, across = S·sin γ0 − V·cos γ0, so that U = across/T and
//   T² = across² + reach²,  reach² = along² + cos²(B·Δλ).
// Hence artanh U = asinh(across/reach) without cancellation near |U| = 1, and
// cos(B·u/A) = cos(B·Δλ)/reach, which takes the singularity at B·Δλ = ±π/2 out of the point scale.
namespace zel_cs::geomath {
namespace {

constexpr double kRightAngle = 1e-15;  // how close |sin α| comes to 1 for an azimuth of ±90°

}  // namespace

Hotine::Hotine(const Ellipsoid& ell, const Line& line) : a_(ell.a), e2_(ell.e2), latitude_(ell) {
  const double sinC = std::sin(line.phiC), cosC = std::cos(line.phiC);
  const double sinA = std::sin(line.azimuth), cosA = std::cos(line.azimuth);
  const double w2 = 1 - e2_ * (sinC * sinC), cos2 = cosC * cosC;
  const double axes = std::sqrt(1 - e2_);

  B = std::sqrt(1 + ell.ep2 * (cos2 * cos2));  // 9-11
  A = a_ * B * line.k0 * axes / w2;            // 9-12

  // ±√(D² − 1) with the sign of φc (9-14, 9-35), from the identity
  // D² − 1 = (1 − e²)·tan²φc/(1 − e²·sin²φc), so that D is never below 1.
  const double G = axes * sinC / (cosC * std::sqrt(w2));
  const double D = std::sqrt(1 + G * G);
  C = std::asinh(G) - B * latitude_.Isometric(sinC, cosC);  // 9-36
  sinGamma0 = sinA / D;                                     // 9-37
  cosGamma0 = std::sqrt(G * G + cosA * cosA) / D;

  // asin(G·tan γ0), 9-38. Kept: at azimuth ±90° it counts as +π/2 whatever the hemisphere.
  const bool rightAngle = std::abs(std::abs(sinA) - 1) < kRightAngle;
  const double toOrigin = rightAngle ? kHalfPi : std::atan2(G * sinA, D * std::abs(cosA));
  lambda0 = line.lambdaC - toOrigin / B;
}

double Hotine::CylinderScale(double sinPhi, double cosPhi) const {
  return A * std::sqrt(1 - e2_ * (sinPhi * sinPhi)) / (a_ * cosPhi);
}

Hotine::Skew Hotine::Forward(double phi, double lambda, double* scale) const {
  const double sinPhi = std::sin(phi), cosPhi = std::cos(phi);
  const double S = HyperbolicPair(B * latitude_.Isometric(sinPhi, cosPhi) + C).sinh;  // 9-25, 9-26
  const double turn = B * (lambda - lambda0);
  const double V = std::sin(turn), cosTurn = std::cos(turn);  // 9-28

  const double along = S * cosGamma0 + V * sinGamma0;
  const double across = S * sinGamma0 - V * cosGamma0;
  const double reach = std::sqrt(along * along + cosTurn * cosTurn);
  if (scale) *scale = CylinderScale(sinPhi, cosPhi) / reach;  // 9-32
  const double R = A / B;
  return {R * std::atan2(along, cosTurn), -R * std::asinh(across / reach)};  // 9-31, 9-30
}

Hotine::Geographic Hotine::Inverse(Skew point, double* scale) const {
  const auto [S, T] = HyperbolicPair(-B * point.v / A);  // 9-42 to 9-44
  const double turn = B * point.u / A;
  const double V = std::sin(turn), cosTurn = std::cos(turn);  // 9-45

  const double up = V * cosGamma0 + S * sinGamma0;
  const double side = S * cosGamma0 - V * sinGamma0;
  const double U = up / T;  // 9-46
  if (std::abs(U) == 1) {
    const double phi = std::copysign(kHalfPi, U);
    if (scale) *scale = CylinderScale(U, std::cos(phi)) * cosTurn;
    return {phi, lambda0};
  }
  const double reach = std::sqrt(side * side + cosTurn * cosTurn);
  const double phi = latitude_.FromIsometric((std::asinh(up / reach) - C) / B);  // 9-47, 7-9
  if (scale) *scale = CylinderScale(std::sin(phi), std::cos(phi)) * reach;
  return {phi, lambda0 - std::atan2(side, cosTurn) / B};  // 9-48
}

HotineGrid::HotineGrid(const Hotine& hotine, const Placement& placement)
    : hotine_(hotine), placement_(placement) {}

void HotineGrid::ToGrid(Hotine::Skew point, double& n, double& e) const {
  const auto& [sinTurn, cosTurn, fNorth, fEast] = placement_;
  n = point.u * cosTurn - point.v * sinTurn + fNorth;
  e = point.u * sinTurn + point.v * cosTurn + fEast;
}

Hotine::Skew HotineGrid::ToSkew(double n, double e) const {
  const auto& [sinTurn, cosTurn, fNorth, fEast] = placement_;
  const double y = n - fNorth, x = e - fEast;
  return {y * cosTurn + x * sinTurn, x * cosTurn - y * sinTurn};
}

bool HotineGrid::Forward(double& b, double& l, PointFactors* factors) const {
  ToGrid(hotine_.Forward(b, l, factors ? &factors->scale : nullptr), b, l);
  return true;
}

bool HotineGrid::Inverse(double& n, double& e, PointFactors* factors) const {
  const auto [phi, lambda] = hotine_.Inverse(ToSkew(n, e), factors ? &factors->scale : nullptr);
  n = phi;
  e = lambda;
  return true;
}

}  // namespace zel_cs::geomath
