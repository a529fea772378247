#include "geomath/proj/methods/utm_proj.h"

#include <cmath>

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/meridian_series.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TUTMProj>> TUTMProj::Params() {
  static constexpr ParamRow<TUTMProj> rows[] = {
      {&TUTMProj::lambda0_, ParamKind::angle, &TUTMProj::Prepare},
      {&TUTMProj::k0_, ParamKind::scale, &TUTMProj::Prepare},
      {&TUTMProj::phi0_, ParamKind::angle, &TUTMProj::Prepare},
      {&TUTMProj::fEast_, ParamKind::length, &TUTMProj::Prepare},
      {&TUTMProj::fNorth_, ParamKind::length, &TUTMProj::Prepare},
  };
  return rows;
}

TUTMProj::TUTMProj() : TUTMProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0) {}

TUTMProj::TUTMProj(double a, double invF, double cm, double scale, double lat0, double fEast,
                   double fNorth)
    : TGeoProj(ProjTypeTM, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TUTMProj::Prepare();
}

void TUTMProj::CM(double value) {
  lambda0_ = value;
  Prepare();
}

void TUTMProj::Scale(double value) {
  k0_ = value;
  Prepare();
}

void TUTMProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TUTMProj::FEast(double value) {
  fEast_ = value;
  Prepare();
}

void TUTMProj::FNorth(double value) {
  fNorth_ = value;
  Prepare();
}

double TUTMProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TUTMProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TUTMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TUTMProj::Prepare() {
  const MeridianSeries series(ell_);
  UtmFormulas& f = formulas_;
  f = {.lambda0 = lambda0_,
       .fEast = fEast_,
       .fNorth = fNorth_,
       .e2 = ell_.e2,
       .ep2 = ell_.ep2,
       .aK0 = k0_ * ell_.a,
       .rK0 = k0_ * series.r,
       .u = {series.u2, series.u4, series.u6},
       .footpoint = series.footpoint,
       .forwardOrigin = 0,
       .inverseOrigin = 0};
  f.forwardOrigin = f.ForwardArc(phi0_, std::sin(phi0_), std::cos(phi0_));
  f.inverseOrigin = f.rK0 * series.arc(phi0_);
}

// Convergence, its sign taken from the longitude difference before it is folded, and point scale.
PointFactors TUTMProj::FactorsAt(double phi, double lambda, const TmLatitude& at, double L) const {
  const double size = std::abs(TmConvergence(at, L));
  const bool east = lambda - lambda0_ >= 0, south = phi < 0;
  return {.scale = k0_ * TmScale(at, L), .convergence = east != south ? size : -size};
}

bool TUTMProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b, lambda = l;
  const auto [at, L] = formulas_.Forward<simd::Libm>(b, l);
  if (factors) *factors = FactorsAt(phi, lambda, at, L);
  return true;
}

bool TUTMProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  formulas_.Inverse<simd::Libm>(n, e);
  if (factors) {
    const double phi = n, lambda = e;
    const double sinPhi = std::sin(phi), cosPhi = std::cos(phi);
    const double L = FoldTurn(lambda - lambda0_) * cosPhi;
    *factors = FactorsAt(phi, lambda, TmLatitude(sinPhi, cosPhi, ell_.ep2), L);
  }
  return true;
}

bool TUTMProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(formulas_, b, l, derivatives);
}

void TUTMProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(formulas_, columns, count);
}

void TUTMProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(formulas_, *this, b, l, count);
}

void TUTMProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(formulas_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
