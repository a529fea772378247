#include "geomath/proj/methods/minnesota_tm_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/stem_tm_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

TMinnesota_TMProj::TMinnesota_TMProj()
    : CountyProj(ProjTypeMinnesota_TM, kWgs84A, kWgs84InvF, CountyParams::NotSetUp()) {
  TMinnesota_TMProj::Prepare();
}

TMinnesota_TMProj::TMinnesota_TMProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : CountyProj(ProjTypeMinnesota_TM, a, invF,
                 {lonOrigin, latOrigin, northStdP, southStdP, scale, fNorth, fEast, desElA, desElB,
                  elevationShift, obliqueAngle, geoidHeight}) {
  TMinnesota_TMProj::Prepare();
}

bool TMinnesota_TMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lonOrigin_, b0, l0, db, dl);
}

void TMinnesota_TMProj::Prepare() {
  *formulas_ = {{WorkingEllipsoid(), WorkingScale(), latOrigin_}, lonOrigin_, fEast_, fNorth_};
}

bool TMinnesota_TMProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const auto [north, east] = formulas_->tm.Forward(b, SetValue(l - lonOrigin_, 1), factors);
  b = fNorth_ + north;
  l = fEast_ + east;
  return true;
}

bool TMinnesota_TMProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const auto [phi, deltaLambda] = formulas_->tm.Inverse(n - fNorth_, e - fEast_, factors);
  n = phi;
  e = lonOrigin_ + deltaLambda;
  return true;
}

FormulaView TMinnesota_TMProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
