#include "geomath/base/ellipsoid.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/base/ellipsoid_formulas.h"
#include "geomath/base/geocentric.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr TangentStop kScalarStop{.tolerance = 1e-14, .maxSteps = 20, .mustSettle = true};

/// Whether the iteration of GeocentricToGeodetic settles by kScalarStop on the latitude that the
/// columns give, so that they may stand for it: its steps shrink an error 60-fold or more where the
/// columns hold, and below this tangent, whose unit in the last place is 1.8e-15, roundings move two
/// successive ones by less than the tolerance. Constants that a caller has set apart from each other
/// stay with the iteration, which reads others of them.
bool SettlesOnColumns(const Ellipsoid& ell, const XyzToBlh& columns, double X, double Y, double Z) {
  constexpr double kMaxTangent = 16;
  const bool whole = ell.e2 == (2 - ell.f) * ell.f && ell.ep2 == ell.e2 / (1 - ell.e2);
  return columns.Serves(X, Y, Z) && std::abs(Z) < kMaxTangent * XyzToBlh::AxisDistance(X, Y) &&
         whole;
}

// Newton steps until the tangent no longer falls; on the evolute, where the root is double, each
// step only halves the error.
ReducedLatitude SolveReducedLatitude(const ReducedLatitudeEquation& equation) {
  constexpr int kMaxSteps = 60;
  ReducedLatitude beta = equation.StartAbove();
  for (int i = 0; i < kMaxSteps; ++i) {
    const ReducedLatitude next = equation.Step(beta);
    if (!(next.c > 0)) break;  // on the evolute to rounding: the pair is the double root
    if (!(next.s * beta.c < beta.s * next.c)) return next;
    beta = next.Unit();
  }
  return beta;
}

}  // namespace

void DeriveEccentricities(Ellipsoid& ell) {
  ell.e2 = (2 - ell.f) * ell.f;
  ell.e = std::sqrt(ell.e2);
  ell.ep2 = ell.e2 / (1 - ell.e2);
}

bool GeocentricToGeodetic(const Ellipsoid& ell, const TangentStop& stop, double& X, double& Y,
                          double& Z) {
  const double a = ell.a, e2 = ell.e2;
  if (std::sqrt(X * X + Y * Y) < kAxisDistance) {
    const double z = Z;
    const double pole = z < 0 ? -kHalfPi : kHalfPi;
    X = z == 0 ? 0 : pole;
    Y = 0;
    Z = z == 0 ? -a : std::abs(z) - a * std::sqrt(1 - e2);
    return true;
  }
  const double L = Atan2(Y, X);
  const auto [sinL, cosL] = SinCos(L);
  const double p = X * cosL + Y * sinL;
  const double polarRadius = a / std::sqrt(1 - e2);
  const double k = e2 * polarRadius;
  const double m = 1 + ell.ep2;
  const double t0 = Z / p;

  double t = t0;
  bool settled = false;
  for (int step = 0; step < stop.maxSteps && !settled; ++step) {
    const double next = t0 + k * t / (p * std::sqrt(m + t * t));
    settled = std::abs(next - t) <= stop.tolerance;
    t = next;
  }
  if (stop.mustSettle && !settled) return false;

  const double B = Atan(t);
  const auto [sinB, cosB] = SinCos(B);
  const double N = a / std::sqrt(1 - e2 * sinB * sinB);
  X = B;
  Y = L;
  Z = p / cosB - N;
  return true;
}

void Ellipsoid::SetEllipsoid(bool fromSemiMinor) {
  if (fromSemiMinor) invF = a / (a - b);
  f = 1 / invF;
  DeriveEccentricities(*this);
  if (!fromSemiMinor) b = (1 - f) * a;
  n = (a - b) / (a + b);
}

bool Ellipsoid::BLH_to_XYZ(double& B, double& L, double& H) const {
  const BlhToXyz conversion(*this);
  if (conversion.Serves(B, L, H))
    conversion.Convert<simd::BatchMath>(B, L, H);
  else
    conversion.Convert<simd::Scalar>(B, L, H);
  return true;
}

bool Ellipsoid::XYZ_to_BLH(double& X, double& Y, double& Z) const {
  const XyzToBlh columns(*this);
  if (!SettlesOnColumns(*this, columns, X, Y, Z))
    return GeocentricToGeodetic(*this, kScalarStop, X, Y, Z);
  columns.Convert<simd::BatchMath>(X, Y, Z);
  return true;
}

double Ellipsoid::GetGaussianRadius(double B) const {
  const double sinB = Sin(B);
  return a * std::sqrt(1 - e2) / (1 - e2 * sinB * sinB);
}

std::size_t Ellipsoid::BLH_to_XYZ_Batch(double* B, double* L, double* H, std::size_t count,
                                        std::ptrdiff_t stride) const {
  const BlhToXyz conversion(*this);
  const auto single = [&](double(&blh)[3]) {
    conversion.Convert<simd::Scalar>(blh[0], blh[1], blh[2]);
  };
  const auto convert = [&](double* const(&columns)[3], std::size_t points) {
    RunKernel(conversion, columns, points, single);
  };
  return ConvertBlocks(convert, count, stride, B, L, H);
}

std::size_t Ellipsoid::XYZ_to_BLH_Batch(double* X, double* Y, double* Z, std::size_t count,
                                        std::ptrdiff_t stride) const {
  const XyzToBlh conversion(*this);
  const auto single = [&](double(&xyz)[3]) {
    const double p = XyzToBlh::AxisDistance(xyz[0], xyz[1]);
    const ReducedLatitude beta = SolveReducedLatitude(conversion.Equation(p, xyz[2]));
    conversion.FromReduced<simd::Scalar>(p, beta, xyz[0], xyz[1], xyz[2]);
  };
  const auto convert = [&](double* const(&columns)[3], std::size_t points) {
    RunKernel(conversion, columns, points, single);
  };
  return ConvertBlocks(convert, count, stride, X, Y, Z);
}

Ellipsoid MakeEllipsoid(double a, double invF) {
  Ellipsoid ellipsoid;
  ellipsoid.a = a;
  ellipsoid.invF = invF;
  ellipsoid.SetEllipsoid(false);
  return ellipsoid;
}

}  // namespace zel_cs::geomath
