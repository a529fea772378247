#include "geomath/proj/methods/nzmg_proj.h"

#include <cmath>
#include <cstddef>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/latitude.h"

// Symbols of the source, there and here:
//   Δφ dPhi  latitude difference, 1e5 arc-seconds    ζ zeta  isometric latitude difference ψ + i·Δλ
//   z        (northing + i·easting)/a
namespace zel_cs::geomath {
namespace {

// A plain pair: the product of std::complex looks for infinities each time, which costs as much.
struct Complex {
  double re = 0, im = 0;
};
constexpr Complex operator+(Complex a, Complex b) { return {a.re + b.re, a.im + b.im}; }
constexpr Complex operator*(Complex a, Complex b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
constexpr Complex operator*(double a, Complex b) { return {a * b.re, a * b.im}; }
constexpr double Norm(Complex a) { return a.re * a.re + a.im * a.im; }
constexpr Complex operator/(Complex a, Complex b) {
  return 1 / Norm(b) * (a * Complex{b.re, -b.im});
}

constexpr double kInternationalA = 6378388;  // metres
constexpr double kInternationalInvF = 297;
constexpr double kLatitudeUnit = 1e5 * kRadPerArcSecond;
constexpr int kRefinements = 3;  // the number that defines the published inverse

// Land Information New Zealand 2008; the coefficient of the first power first.
// clang-format off
constexpr double kA[] = {  // latitude to isometric latitude
  0.6399175073, -0.1358797613, 0.063294409, -0.02526853, 0.0117879,
  -0.0055161, 0.0026906, -0.001333, 0.00067, -0.00034};
constexpr Complex kB[] = {  // isometric coordinates to the grid
  {0.7557853228, 0.0}, {0.249204646, 0.003371507}, {-0.001541739, 0.041058560},
  {-0.10162907, 0.01727609}, {-0.26623489, -0.36249218}, {-0.6870983, -1.1651967}};
constexpr Complex kC[] = {  // the grid to isometric coordinates, first approximation
  {1.3231270439, 0.0}, {-0.577245789, -0.007809598}, {0.508307513, -0.112208952},
  {-0.15094762, 0.18200602}, {1.01418179, 1.64497696}, {1.9660549, 2.5127645}};
constexpr double kD[] = {  // isometric latitude to latitude
  1.5627014243, 0.5185406398, -0.03333098, -0.1052906, -0.0368594,
  0.007317, 0.01220, 0.00394, -0.0013};
// clang-format on

// Σ c[n]·x^(n + 1).
template <class T, std::size_t N>
T Powers(const T (&c)[N], T x) {
  T sum{};
  for (std::size_t n = N; n-- > 0;) sum = (sum + c[n]) * x;
  return sum;
}

// dz/dζ = Σ n·B_n·ζ^(n − 1).
Complex Slope(Complex zeta) {
  Complex sum;
  for (std::size_t n = std::size(kB); n > 0; --n)
    sum = sum * zeta + static_cast<double>(n) * kB[n - 1];
  return sum;
}

// Newton's step for z(ζ) = z, written as the source has it: (z + Σ (n − 1)·B_n·ζⁿ)/(dz/dζ).
Complex Refine(Complex zeta, Complex z) {
  Complex sum;
  for (std::size_t n = std::size(kB); n > 1; --n)
    sum = (sum + static_cast<double>(n - 1) * kB[n - 1]) * zeta;
  return (z + sum * zeta) / Slope(zeta);
}

// |dz/dζ| over the radius of the parallel, both in units of a.
double PointScale(Complex zeta, double phi, double e2) {
  return std::sqrt(Norm(Slope(zeta))) / ParallelRadius(std::sin(phi), std::cos(phi), e2);
}

}  // namespace

std::span<const ParamRow<TNZMGProj>> TNZMGProj::Params() {
  static constexpr ParamRow<TNZMGProj> rows[] = {
      {&TNZMGProj::phi0_, ParamKind::angle},
      {&TNZMGProj::lambda0_, ParamKind::angle},
      {&TNZMGProj::fEast_, ParamKind::length},
      {&TNZMGProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TNZMGProj::TNZMGProj()
    : TNZMGProj(kInternationalA, kInternationalInvF, -41 * kRadPerDeg, 173 * kRadPerDeg, 2510000,
                6023150) {}

TNZMGProj::TNZMGProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth)
    : TGeoProj(ProjTypeNZMG, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      fEast_(fEast),
      fNorth_(fNorth) {}

double TNZMGProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TNZMGProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TNZMGProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

bool TNZMGProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b, dPhi = (phi - phi0_) / kLatitudeUnit;
  const Complex zeta{Powers(kA, dPhi), SetValue(l - lambda0_, 1)};
  const Complex z = Powers(kB, zeta);
  if (factors) factors->scale = PointScale(zeta, phi, ell_.e2);
  b = fNorth_ + ell_.a * z.re;
  l = fEast_ + ell_.a * z.im;
  return true;
}

bool TNZMGProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  const Complex z{(n - fNorth_) / ell_.a, (e - fEast_) / ell_.a};
  Complex zeta = Powers(kC, z);
  for (int i = 0; i < kRefinements; ++i) zeta = Refine(zeta, z);

  const double phi = phi0_ + kLatitudeUnit * Powers(kD, zeta.re);
  if (factors) factors->scale = PointScale(zeta, phi, ell_.e2);
  n = phi;
  e = lambda0_ + zeta.im;
  return true;
}

}  // namespace zel_cs::geomath
