#include "geomath/base/ellipsoid.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/base/geocentric.h"

namespace zel_cs::geomath {
namespace {

constexpr double kAxisDistance = 1e-10;  // metres; nearer points lie on the polar axis
constexpr TangentStop kScalarStop{.tolerance = 1e-14, .maxSteps = 20, .mustSettle = true};

// Latitude as an unnormalised pair: tan β = s/c of the reduced latitude, quarter 0…π/2.
struct ReducedLatitude {
  double s, c;
};

// Solves tan β = (z + e²·sin β)/p for the reduced latitude β, with p the distance from the axis in
// units of a and z the distance from the equator in units of a²/b, both not negative
// (Bowring 1976, eq. 3, written for β; Fukushima 2006, eq. 7).
//
// The equation is convex in tan β, so Newton steps that start above the root descend to it without
// passing it, wherever the point lies. One fixed-point step from sin β = 1 gives such a start; it
// is already exact to order e⁴ near the surface, where two Newton steps reach rounding. The pair
// (s, c) stands for the tangent so that the axis needs no division.
ReducedLatitude SolveReducedLatitude(double p, double z, double e2) {
  constexpr int kMaxSteps = 60;  // a multiple root, on the evolute, halves the error each step
  const double start = std::hypot(z + e2, p);
  if (start == 0) return {0, 1};
  double s = z + e2 * ((z + e2) / start), c = p;
  double scale = std::hypot(s, c);
  s /= scale;
  c /= scale;
  for (int i = 0; i < kMaxSteps; ++i) {
    const double numerator = z + e2 * (s * s * s);
    const double denominator = p - e2 * (c * c * c);
    if (!(denominator > 0)) break;  // on the evolute to rounding: the pair is the double root
    scale = std::hypot(numerator, denominator);
    const double sNext = numerator / scale, cNext = denominator / scale;
    const bool settled = !(sNext * c < s * cNext);  // the tangent no longer falls
    if (settled) break;
    s = sNext;
    c = cNext;
  }
  return {s, c};
}

// The height is the projection of the point onto the normal less that of the foot point, which is
// stationary in the latitude: no digits are lost near the poles.
bool ToGeodetic(const Ellipsoid& ell, double& X, double& Y, double& Z) {
  const double p = std::hypot(X, Y);
  const double lambda = p < kAxisDistance ? 0.0 : std::atan2(Y, X);
  const double oneMinusF = 1 - ell.f;
  if (Z == 0) {
    X = 0;
    Y = lambda;
    Z = p - ell.a;
    return true;
  }
  const auto [s, c] = SolveReducedLatitude(p / ell.a, oneMinusF * std::abs(Z) / ell.a, ell.e2);
  const double cosScaled = oneMinusF * c;  // tan φ = tan β/(1 − f)
  const double length = std::hypot(s, cosScaled);
  const double sinPhi = s / length, cosPhi = cosScaled / length;
  const double h = p * cosPhi + std::abs(Z) * sinPhi -
                   ell.a * std::sqrt((1 - ell.e2) * sinPhi * sinPhi + cosPhi * cosPhi);
  X = std::copysign(std::atan2(s, cosScaled), Z);
  Y = lambda;
  Z = h;
  return true;
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
  const double L = std::atan2(Y, X);
  const double p = X * std::cos(L) + Y * std::sin(L);
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

  const double B = std::atan(t);
  const double sinB = std::sin(B);
  const double N = a / std::sqrt(1 - e2 * sinB * sinB);
  X = B;
  Y = L;
  Z = p / std::cos(B) - N;
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
  const double sinB = std::sin(B), cosB = std::cos(B);
  const double N = a / std::sqrt(1 - e2 * sinB * sinB);
  const double X = (N + H) * cosB * std::cos(L);
  const double Y = (N + H) * cosB * std::sin(L);
  const double Z = (N + H - e2 * N) * sinB;
  B = X;
  L = Y;
  H = Z;
  return true;
}

bool Ellipsoid::XYZ_to_BLH(double& X, double& Y, double& Z) const {
  return GeocentricToGeodetic(*this, kScalarStop, X, Y, Z);
}

double Ellipsoid::GetGaussianRadius(double B) const {
  const double sinB = std::sin(B);
  return a * std::sqrt(1 - e2) / (1 - e2 * sinB * sinB);
}

std::size_t Ellipsoid::BLH_to_XYZ_Batch(double* B, double* L, double* H, std::size_t count,
                                        std::ptrdiff_t stride) const {
  return ConvertEach([this](double& x, double& y, double& z) { return BLH_to_XYZ(x, y, z); }, count,
                     stride, B, L, H);
}

std::size_t Ellipsoid::XYZ_to_BLH_Batch(double* X, double* Y, double* Z, std::size_t count,
                                        std::ptrdiff_t stride) const {
  return ConvertEach([this](double& x, double& y, double& z) { return ToGeodetic(*this, x, y, z); },
                     count, stride, X, Y, Z);
}

Ellipsoid MakeEllipsoid(double a, double invF) {
  Ellipsoid ellipsoid;
  ellipsoid.a = a;
  ellipsoid.invF = invF;
  ellipsoid.SetEllipsoid(false);
  return ellipsoid;
}

}  // namespace zel_cs::geomath
