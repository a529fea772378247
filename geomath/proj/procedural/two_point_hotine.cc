#include "geomath/proj/procedural/two_point_hotine.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/simd/scalar.h"

// Equation numbers are Snyder 1987. With the isometric latitude ψ and his t = exp(−ψ), E = exp(C):
//   H = t1^B, L = t2^B, F = E/H = exp(C + B·ψ1)
// so that the quotients J (9-18) and P (9-19) and (F − 1/F)/2 become hyperbolic functions.
namespace zel_cs::geomath {
namespace {

constexpr double kTolerance = 1e-10;  // radians

bool DefinesLine(const TwoPointLine& line) {
  const auto nearPole = [](double phi) { return !(std::abs(phi) < kHalfPi - kTolerance); };
  return !nearPole(line.phi1) && !nearPole(line.phi2) && !(std::abs(line.phiC) >= kHalfPi) &&
         std::abs(line.phi1 - line.phi2) > kTolerance && std::abs(line.phi1) > kTolerance;
}

}  // namespace

std::optional<HotineGrid> HotineThroughTwoPoints(const Ellipsoid& ell, const TwoPointLine& line) {
  if (!DefinesLine(line)) return std::nullopt;

  Hotine hotine(ell, {.azimuth = 0, .k0 = line.k0, .phiC = line.phiC, .lambdaC = 0});
  const ConformalLatitude latitude(ell);
  const double B = hotine.B, C = hotine.C;
  const double psi1 = latitude.Isometric(line.phi1), psi2 = latitude.Isometric(line.phi2);

  // The two points less than half a turn apart.
  const double apart = line.lambda1 - line.lambda2;
  const double turn = apart < -kPi ? -kTwoPi : apart > kPi ? kTwoPi : 0;
  const double lambda2 = line.lambda2 + turn, difference = line.lambda1 - lambda2;

  const double J = Tanh(C + B * (psi1 + psi2) / 2);  // 9-18
  const double P = Tanh(B * (psi1 - psi2) / 2);      // 9-19
  const double east = Atan(J * Tan(B * difference / 2) / P) / B;
  hotine.lambda0 = SetValue((line.lambda1 + lambda2) / 2 - east, 1);  // 9-20

  const double fromOrigin = SetValue(line.lambda1 - hotine.lambda0, 1);
  const double gamma0 = Atan(Sin(B * fromOrigin) / Sinh(C + B * psi1));  // 9-21
  hotine.sinGamma0 = Sin(gamma0);
  hotine.cosGamma0 = Cos(gamma0);

  // The azimuth at the centre; D = cosh of the centre's argument. A centre north of the line's
  // turning point counts as that point.
  const double D = Cosh(C + B * latitude.Isometric(line.phiC));
  const double sinTurn = std::clamp(D * hotine.sinGamma0, -1.0, 1.0);  // 9-22
  const double cosTurn = std::sqrt((1 - sinTurn) * (1 + sinTurn));
  return HotineGrid(hotine, {sinTurn, cosTurn, line.fNorth, line.fEast});
}

}  // namespace zel_cs::geomath
