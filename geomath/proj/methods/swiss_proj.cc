#include "geomath/proj/methods/swiss_proj.h"

#include <cmath>

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TSwissProj>> TSwissProj::Params() {
  static constexpr ParamRow<TSwissProj> rows[] = {
      {&TSwissProj::lambda0_, ParamKind::angle, &TSwissProj::Prepare},
      {&TSwissProj::phi0_, ParamKind::angle, &TSwissProj::Prepare},
      {&TSwissProj::fEast_, ParamKind::length, &TSwissProj::Prepare},
      {&TSwissProj::fNorth_, ParamKind::length, &TSwissProj::Prepare},
  };
  return rows;
}

TSwissProj::TSwissProj() : TSwissProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TSwissProj::TSwissProj(double a, double invF, double lon0, double lat0, double fEast, double fNorth)
    : TGeoProj(ProjTypeSwiss, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TSwissProj::Prepare();
}

void TSwissProj::Set(double& field, double value) {
  field = value;
  Prepare();
}

double TSwissProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TSwissProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TSwissProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TSwissProj::Prepare() {
  const ConformalSphere sphere(ell_, phi0_);
  formulas_ = {.sphere = sphere,
               .lambda0 = lambda0_,
               .fEast = fEast_,
               .fNorth = fNorth_,
               .sinB0 = std::sin(sphere.chi0),
               .cosB0 = std::cos(sphere.chi0)};
}

double TSwissProj::PointScale(double phi, const SwissFormulas::Position& at) const {
  const ConformalSphere& sphere = formulas_.sphere;
  const double m = ParallelRadius(std::sin(phi), std::cos(phi), ell_.e2);
  return sphere.alpha * sphere.R * at.cosB / (ell_.a * m * at.cosBBar);
}

bool TSwissProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!IsLatitude(b)) return false;
  const double phi = b;
  double n = b, e = l;
  const SwissFormulas::Position at = ForwardOne(formulas_, n, e);
  if (!at.exists) return false;
  if (factors) factors->scale = PointScale(phi, at);
  b = n;
  l = e;
  return true;
}

bool TSwissProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const SwissFormulas::Position at = InverseOne(formulas_, n, e);
  if (factors) factors->scale = PointScale(n, at);
  return true;
}

bool TSwissProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(formulas_, b, l, derivatives);
}

void TSwissProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(formulas_, columns, count);
}

void TSwissProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(formulas_, *this, b, l, count);
}

void TSwissProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(formulas_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
