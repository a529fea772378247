#include "geomath/proj/methods/lc_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

// Symbols of Snyder 1987 and here:
//   φS φN  phiS_ phiN_     standard parallels       ρ  rho    cone radius, metres
//   φ0 λ0  phi0_ lambda0_  origin                   θ  theta  angle at the apex
namespace zel_cs::geomath {

std::span<const ParamRow<TLCProj>> TLCProj::Params() {
  static constexpr ParamRow<TLCProj> rows[] = {
      {&TLCProj::phiS_, ParamKind::angle, &TLCProj::RefreshSouth},
      {&TLCProj::phiN_, ParamKind::angle, &TLCProj::RefreshNorth},
      {&TLCProj::lambda0_, ParamKind::angle},
      {&TLCProj::phi0_, ParamKind::angle, &TLCProj::RefreshOrigin},
      {&TLCProj::fEast_, ParamKind::length},
      {&TLCProj::fNorth_, ParamKind::length},
      {&TLCProj::k0_, ParamKind::scale, &TLCProj::Prepare},
  };
  return rows;
}

TLCProj::TLCProj() : TLCProj(kWgs84A, kWgs84InvF, 0, kPi / 6, 0, 0, 0, 0, 1.0) {}

TLCProj::TLCProj(double a, double invF, double southLat, double northLat, double lon0, double lat0,
                 double fEast, double fNorth, double scale)
    : TGeoProj(ProjTypeLC, static_cast<int>(Params().size()), a, invF, true),
      phiS_(southLat),
      phiN_(northLat),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth),
      k0_(scale),
      sinS_(std::sin(southLat)),
      cosS_(std::cos(southLat)),
      sinN_(std::sin(northLat)),
      cosN_(std::cos(northLat)),
      sin0_(std::sin(lat0)) {
  TLCProj::Prepare();
}

// Kept: these three leave the sines and cosines as they were.
void TLCProj::SouthLat(double value) {
  phiS_ = value;
  Prepare();
}

void TLCProj::NorthLat(double value) {
  phiN_ = value;
  Prepare();
}

void TLCProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TLCProj::Scale(double value) {
  k0_ = value;
  Prepare();
}

double TLCProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TLCProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TLCProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TLCProj::RefreshSouth() {
  sinS_ = std::sin(phiS_);
  cosS_ = std::cos(phiS_);
  Prepare();
}

void TLCProj::RefreshNorth() {
  sinN_ = std::sin(phiN_);
  cosN_ = std::cos(phiN_);
  Prepare();
}

void TLCProj::RefreshOrigin() {
  sin0_ = std::sin(phi0_);
  Prepare();
}

void TLCProj::Prepare() {
  cone_ = LambertCone(ell_, {phiS_, sinS_, cosS_}, {phiN_, sinN_, cosN_}, k0_);
  forwardRho0_ = cone_.Radius(phi0_, std::sin(phi0_));
  inverseRho0_ = cone_.Radius(phi0_, sin0_);
}

LcFormulas TLCProj::Formulas() const {
  return {{cone_, lambda0_, fEast_, fNorth_, forwardRho0_}, inverseRho0_};
}

bool TLCProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (std::abs(b) == kHalfPi) return false;
  const auto [at, sinPhi, cosPhi] = ForwardOne(Formulas(), b, l);
  if (factors) factors->scale = cone_.Scale(at.rho, sinPhi, cosPhi);
  return true;
}

bool TLCProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const LambertCone::Polar at = InverseOne(Formulas(), n, e);
  if (factors) factors->scale = cone_.Scale(at.rho, std::sin(n), std::cos(n));
  return true;
}

bool TLCProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TLCProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TLCProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TLCProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
