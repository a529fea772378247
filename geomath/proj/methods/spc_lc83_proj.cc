#include "geomath/proj/methods/spc_lc83_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

// Stem 1989 writes the cone with hyperbolic functions and finds the latitude by three Newton steps on
// its sine; both lead to the numbers of LambertCone. His Rb is rho0_, his Nb fNorth_.
namespace zel_cs::geomath {

std::span<const ParamRow<TSPC_LC83Proj>> TSPC_LC83Proj::Params() {
  using T = TSPC_LC83Proj;
  static constexpr ParamRow<T> rows[] = {
      {&T::phiS_, ParamKind::angle, &T::Prepare},
      {&T::phiN_, ParamKind::angle, &T::Prepare},
      {&T::lambda0_, ParamKind::angle},
      {&T::phi0_, ParamKind::angle, &T::Prepare},
      {&T::fEast_, ParamKind::length},
      {&T::fNorth_, ParamKind::length},
      {&T::zone_, ParamKind::number},
  };
  return rows;
}

TSPC_LC83Proj::TSPC_LC83Proj() : TSPC_LC83Proj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, 0, 0) {
  type_ = ProjTypeTM;  // Kept
}

TSPC_LC83Proj::TSPC_LC83Proj(double a, double invF, double southLat, double northLat, double lon0,
                             double lat0, double fEast, double fNorth, int zone)
    : TGeoProj(ProjTypeSPC_LC83, static_cast<int>(Params().size()), a, invF, true),
      phiS_(southLat),
      phiN_(northLat),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth),
      zone_(zone) {
  TSPC_LC83Proj::Prepare();
}

void TSPC_LC83Proj::SouthLat(double value) {
  phiS_ = value;
  Prepare();
}

void TSPC_LC83Proj::NorthLat(double value) {
  phiN_ = value;
  Prepare();
}

void TSPC_LC83Proj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

double TSPC_LC83Proj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TSPC_LC83Proj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TSPC_LC83Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TSPC_LC83Proj::Prepare() {
  cone_ = LambertCone(ell_, phiS_, phiN_, 1.0);
  rho0_ = cone_.Radius(phi0_);
}

LambertFormulas TSPC_LC83Proj::Formulas() const {
  return {cone_, lambda0_, fEast_, fNorth_, rho0_};
}

bool TSPC_LC83Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!(std::abs(b) < kHalfPi)) return false;
  const auto [at, sinPhi, cosPhi] = ForwardOne(Formulas(), b, l);
  if (factors) *factors = {cone_.Scale(at.rho, sinPhi, cosPhi), at.theta};
  return true;
}

bool TSPC_LC83Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const LambertCone::Polar at = InverseOne(Formulas(), n, e);
  if (factors) *factors = {cone_.Scale(at.rho, std::sin(n), std::cos(n)), at.theta};
  return true;
}

bool TSPC_LC83Proj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TSPC_LC83Proj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TSPC_LC83Proj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TSPC_LC83Proj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
