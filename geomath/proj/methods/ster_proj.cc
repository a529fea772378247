#include "geomath/proj/methods/ster_proj.h"

#include <cmath>

#include "geomath/proj/methods/math/central_point.h"

// Equation numbers are Snyder 1987. Symbols there and here:
//   φ0 λ0  phi0_ lambda0_  origin (his φ1)        χ  chi    conformal latitude
//   A      his factor of the oblique aspect       ρ  rho    distance from the pole on the map
namespace zel_cs::geomath {
namespace {

constexpr double kPolarLimit = kHalfPi - 1e-12;  // origins beyond it are poles
constexpr double kPolarCosine = 1e-12;           // points below it are the pole

}  // namespace

std::span<const ParamRow<TSterProj>> TSterProj::Params() {
  static constexpr ParamRow<TSterProj> rows[] = {
      {&TSterProj::phi0_, ParamKind::angle, &TSterProj::Prepare},
      {&TSterProj::lambda0_, ParamKind::angle},
      {&TSterProj::k0_, ParamKind::scale, &TSterProj::Prepare},
      {&TSterProj::fEast_, ParamKind::length},
      {&TSterProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TSterProj::TSterProj() : TSterProj(kWgs84A, kWgs84InvF, 0, 0, 1.0, 0, 0) {}

TSterProj::TSterProj(double a, double invF, double lat0, double lon0, double scale, double fEast,
                     double fNorth)
    : TGeoProj(ProjTypeSter, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      k0_(scale),
      fEast_(fEast),
      fNorth_(fNorth),
      polarSeries_(ConformalSeries(ell_.e2)) {
  TSterProj::Prepare();
}

void TSterProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TSterProj::Scale(double value) {
  k0_ = value;
  Prepare();
}

double TSterProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TSterProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TSterProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TSterProj::Prepare() {
  polar_ = std::abs(phi0_) >= kPolarLimit;
  sign_ = polar_ && phi0_ < 0 ? -1.0 : 1.0;
  latitude_ = ConformalLatitude(ell_);
  polarSeries_ = ConformalSeries(ell_.e2);

  const double sin0 = std::sin(phi0_), cos0 = std::cos(phi0_), e = ell_.e;
  chi1_ = latitude_.FromGeodetic(sin0, cos0);
  obliqueA_ = 2 * ell_.a * k0_ * ParallelRadius(sin0, cos0, ell_.e2) / chi1_.cos;
  polarRadius_ = 2 * ell_.a * k0_ / std::sqrt(std::pow(1 + e, 1 + e) * std::pow(1 - e, 1 - e));
}

bool TSterProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  return polar_ ? PolarForward(b, l, factors) : ObliqueForward(b, l, factors);
}

bool TSterProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  return polar_ ? PolarInverse(n, e, factors) : ObliqueInverse(n, e, factors);
}

// The south polar aspect is the north polar one of the negated latitudes and longitudes, negated.
bool TSterProj::PolarForward(double& b, double& l, PointFactors* factors) const {
  const double phi = sign_ * b, deltaLambda = sign_ * SetValue(l - lambda0_, 1);
  const double sinPhi = std::sin(phi), cosPhi = std::cos(phi);
  double rho = 0;
  if (!(cosPhi <= kPolarCosine)) {
    const SinCos chi = latitude_.FromGeodetic(sinPhi, cosPhi);
    rho =
        polarRadius_ * (chi.sin > 0 ? chi.cos / (1 + chi.sin) : (1 - chi.sin) / chi.cos);  // 21-33
  }
  if (factors) factors->scale = rho / (ell_.a * ParallelRadius(sinPhi, cosPhi, ell_.e2));  // 21-32
  b = fNorth_ - sign_ * rho * std::cos(deltaLambda);                                       // 21-31
  l = fEast_ + sign_ * rho * std::sin(deltaLambda);                                        // 21-30
  return true;
}

bool TSterProj::PolarInverse(double& n, double& e, PointFactors* factors) const {
  const double x = sign_ * (e - fEast_), y = sign_ * (n - fNorth_);
  const double rho = std::sqrt(x * x + y * y);
  double phi = kHalfPi, deltaLambda = 0;
  if (x != 0 || y != 0) {
    const double t = rho / polarRadius_;             // 21-39
    phi = polarSeries_(kHalfPi - 2 * std::atan(t));  // 7-13, 3-5
    deltaLambda = std::atan2(x, -y);                 // 20-16
  }
  if (factors)
    factors->scale = rho / (ell_.a * ParallelRadius(std::sin(phi), std::cos(phi), ell_.e2));
  n = sign_ * phi;
  e = lambda0_ + sign_ * deltaLambda;
  return true;
}

bool TSterProj::ObliqueForward(double& b, double& l, PointFactors* factors) const {
  const double phi = b, deltaLambda = SetValue(l - lambda0_, 1);
  const double sinPhi = std::sin(phi), cosPhi = std::cos(phi);
  if (sinPhi == 1 && phi0_ != 0) return false;

  // Kept: a latitude beyond a pole counts by its sine, as its supplement.
  const SinCos chi = latitude_.FromGeodetic(sinPhi, std::abs(cosPhi));
  const double cosDelta = std::cos(deltaLambda);
  const double A = obliqueA_ / (1 + chi1_.sin * chi.sin + chi1_.cos * chi.cos * cosDelta);  // 21-27
  if (factors)
    factors->scale = A * chi.cos / (ell_.a * ParallelRadius(sinPhi, cosPhi, ell_.e2));  // 21-26
  b = fNorth_ + A * (chi1_.cos * chi.sin - chi1_.sin * chi.cos * cosDelta);             // 21-25
  l = fEast_ + A * chi.cos * std::sin(deltaLambda);                                     // 21-24
  return true;
}

// The point on the conformal sphere as a vector: sine of its latitude, and its parts along and
// across the meridian of origin. With q = tan(ce/2), 21-38, the sine and cosine of ce are rational.
bool TSterProj::ObliqueInverse(double& n, double& e, PointFactors* factors) const {
  const double x = (e - fEast_) / obliqueA_, y = (n - fNorth_) / obliqueA_;
  const double q2 = x * x + y * y;
  const double cosCe = (1 - q2) / (1 + q2), unit = 2 / (1 + q2);
  const double across = unit * x;
  const double along = chi1_.cos * cosCe - chi1_.sin * unit * y;
  const SinCos chi{cosCe * chi1_.sin + unit * y * chi1_.cos,  // 20-14
                   std::sqrt(along * along + across * across)};

  const double phi = latitude_.ToGeodetic(chi);
  if (factors) {
    const double cosDelta = std::abs(along);  // times cos χ, at the folded longitude
    const double A = obliqueA_ / (1 + chi1_.sin * chi.sin + chi1_.cos * cosDelta);
    factors->scale = A * chi.cos / (ell_.a * ParallelRadius(std::sin(phi), std::cos(phi), ell_.e2));
  }
  n = phi;
  e = lambda0_ + (across == 0 ? 0.0 : std::atan(across / along));  // 20-15, Kept: not atan2
  return true;
}

}  // namespace zel_cs::geomath
