#include "geomath/proj/methods/colombia_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"

namespace zel_cs::geomath {
namespace {

constexpr double kHalfExtent = kPi / 360;  // half a degree, 55 km

}  // namespace

std::span<const ParamRow<TColombiaProj>> TColombiaProj::Params() {
  static constexpr ParamRow<TColombiaProj> rows[] = {
      {&TColombiaProj::phi0_, ParamKind::angle, &TColombiaProj::Prepare},
      {&TColombiaProj::lambda0_, ParamKind::angle, &TColombiaProj::Prepare},
      {&TColombiaProj::fEast_, ParamKind::length, &TColombiaProj::Prepare},
      {&TColombiaProj::fNorth_, ParamKind::length, &TColombiaProj::Prepare},
  };
  return rows;
}

TColombiaProj::TColombiaProj() : TColombiaProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TColombiaProj::TColombiaProj(double a, double invF, double lat0, double lon0, double fEast,
                             double fNorth)
    : TGeoProj(ProjTypeColombia, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TColombiaProj::Prepare();
}

void TColombiaProj::Set(double& field, double value) {
  field = value;
  Prepare();
}

double TColombiaProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TColombiaProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TColombiaProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  b0 = phi0_;
  l0 = lambda0_;
  db = dl = kHalfExtent;
  return true;
}

void TColombiaProj::Prepare() {
  const double sin0 = std::sin(phi0_);
  const double rho0 = MeridianRadius(sin0, ell_);
  formulas_ = {.a = ell_.a,
               .e2 = ell_.e2,
               .phi0 = phi0_,
               .lambda0 = lambda0_,
               .fEast = fEast_,
               .fNorth = fNorth_,
               .rho0 = rho0,
               .B = std::tan(phi0_) / (2 * rho0 * PrimeVerticalRadius(sin0, ell_))};
}

bool TColombiaProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  formulas_.Forward<simd::Libm>(b, l);
  return true;
}

bool TColombiaProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  formulas_.Inverse<simd::Libm>(n, e);
  return true;
}

bool TColombiaProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(formulas_, b, l, derivatives);
}

void TColombiaProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(formulas_, columns, count);
}

void TColombiaProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(formulas_, *this, b, l, count);
}

void TColombiaProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(formulas_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
