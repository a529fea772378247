#include "geomath/proj/methods/ster_proj.h"

#include <cmath>

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

// Equation numbers are Snyder 1987. Symbols there and here:
//   φ0 λ0  phi0_ lambda0_  origin (his φ1)        χ  chi    conformal latitude
namespace zel_cs::geomath {
namespace {

constexpr double kPolarLimit = kHalfPi - 1e-12;  // origins beyond it are poles

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

SterObliqueFormulas TSterProj::Oblique() const {
  return {latitude_, chi1_, obliqueA_, lambda0_, fEast_, fNorth_};
}

SterPolarFormulas TSterProj::Polar() const {
  return {latitude_, polarSeries_, sign_, polarRadius_, lambda0_, fEast_, fNorth_};
}

bool TSterProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (polar_) {
    const auto [sinPhi, cosPhi, rho] = ForwardOne(Polar(), b, l);
    if (factors)
      factors->scale = rho / (ell_.a * ParallelRadius(sinPhi, cosPhi, ell_.e2));  // 21-32
    return true;
  }
  double north = b, east = l;
  const auto [sinPhi, cosPhi, cosChi, A] = ForwardOne(Oblique(), north, east);
  if (sinPhi == 1 && phi0_ != 0) return false;
  b = north;
  l = east;
  if (factors)
    factors->scale = A * cosChi / (ell_.a * ParallelRadius(sinPhi, cosPhi, ell_.e2));  // 21-26
  return true;
}

bool TSterProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  double radius;  // of the parallel on the map, unrolled
  if (polar_) {
    radius = InverseOne(Polar(), n, e).rho;
  } else {
    const auto image = InverseOne(Oblique(), n, e);
    radius = image.A * image.cosChi;
  }
  if (factors)
    factors->scale = radius / (ell_.a * ParallelRadius(std::sin(n), std::cos(n), ell_.e2));
  return true;
}

bool TSterProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return polar_ ? DerivativesOf(Polar(), b, l, derivatives)
                : DerivativesOf(Oblique(), b, l, derivatives);
}

void TSterProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  polar_ ? DerivativesByKernel(Polar(), columns, count)
         : DerivativesByKernel(Oblique(), columns, count);
}

void TSterProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  polar_ ? ForwardByKernel(Polar(), *this, b, l, count)
         : ForwardByKernel(Oblique(), *this, b, l, count);
}

void TSterProj::InverseBlock(double* n, double* e, std::size_t count) const {
  polar_ ? InverseByKernel(Polar(), *this, n, e, count)
         : InverseByKernel(Oblique(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
