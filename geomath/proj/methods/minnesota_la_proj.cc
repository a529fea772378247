#include "geomath/proj/methods/minnesota_la_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

TMinnesota_LAProj::TMinnesota_LAProj()
    : CountyProj(ProjTypeMinnesota_LA, kWgs84A, kWgs84InvF, CountyParams::NotSetUp()) {
  TMinnesota_LAProj::Prepare();
}

TMinnesota_LAProj::TMinnesota_LAProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : CountyProj(ProjTypeMinnesota_LA, a, invF,
                 {lonOrigin, latOrigin, northStdP, southStdP, scale, fNorth, fEast, desElA, desElB,
                  elevationShift, obliqueAngle, geoidHeight}) {
  TMinnesota_LAProj::Prepare();
}

bool TMinnesota_LAProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(params_.latOrigin, params_.lonOrigin, b0, l0, db, dl);
}

void TMinnesota_LAProj::Prepare() {
  const Ellipsoid county = WorkingEllipsoid();
  cone_ = LambertCone(county, params_.southStdP, params_.northStdP, WorkingScale());
  rho0_ = cone_.Radius(params_.latOrigin);
}

LambertFormulas TMinnesota_LAProj::Formulas() const {
  return {cone_, params_.lonOrigin, params_.fEast, params_.fNorth, rho0_};
}

bool TMinnesota_LAProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!(std::abs(b) < kHalfPi)) return false;
  const auto [at, sinPhi, cosPhi] = ForwardOne(Formulas(), b, l);
  if (factors) factors->scale = cone_.Scale(at.rho, sinPhi, cosPhi);
  return true;
}

bool TMinnesota_LAProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const LambertCone::Polar at = InverseOne(Formulas(), n, e);
  if (factors) factors->scale = cone_.Scale(at.rho, std::sin(n), std::cos(n));
  return true;
}

bool TMinnesota_LAProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TMinnesota_LAProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TMinnesota_LAProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TMinnesota_LAProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
