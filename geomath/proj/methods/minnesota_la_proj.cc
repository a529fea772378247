#include "geomath/proj/methods/minnesota_la_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/lambert_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/simd/scalar.h"

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
  return ConicCentralPoint(latOrigin_, lonOrigin_, b0, l0, db, dl);
}

void TMinnesota_LAProj::Prepare() {
  const LambertCone cone(WorkingEllipsoid(), southStdP_, northStdP_, WorkingScale());
  *formulas_ = {.cone = cone,
                .lambda0 = lonOrigin_,
                .fEast = fEast_,
                .fNorth = fNorth_,
                .rho0 = cone.Radius(latOrigin_)};
}

bool TMinnesota_LAProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!(std::abs(b) < kHalfPi)) return false;
  const auto [at, sinPhi, cosPhi] = ForwardOne(*formulas_, b, l);
  if (factors) factors->scale = formulas_->cone.Scale(at.rho, sinPhi, cosPhi);
  return true;
}

bool TMinnesota_LAProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const LambertCone::Polar at = InverseOne(*formulas_, n, e);
  if (!factors) return true;
  const auto [sinPhi, cosPhi] = SineCosineOne(n);
  factors->scale = formulas_->cone.Scale(at.rho, sinPhi, cosPhi);
  return true;
}

FormulaView TMinnesota_LAProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
