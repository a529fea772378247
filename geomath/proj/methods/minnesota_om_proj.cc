#include "geomath/proj/methods/minnesota_om_proj.h"

#include "geomath/proj/methods/formulas/hotine_grid.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

TMinnesota_OMProj::TMinnesota_OMProj()
    : CountyProj(ProjTypeMinnesota_OM, kWgs84A, kWgs84InvF, CountyParams::NotSetUp()) {
  TMinnesota_OMProj::Prepare();
}

TMinnesota_OMProj::TMinnesota_OMProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : CountyProj(ProjTypeMinnesota_OM, a, invF,
                 {lonOrigin, latOrigin, northStdP, southStdP, scale, fNorth, fEast, desElA, desElB,
                  elevationShift, obliqueAngle, geoidHeight}) {
  TMinnesota_OMProj::Prepare();
}

bool TMinnesota_OMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(latOrigin_, lonOrigin_, b0, l0, db, dl);
}

void TMinnesota_OMProj::Prepare() {
  *grid_ = {{WorkingEllipsoid(), {obliqueAngle_, WorkingScale(), latOrigin_, lonOrigin_}},
            {Sin(obliqueAngle_), Cos(obliqueAngle_), fNorth_, fEast_}};
}

bool TMinnesota_OMProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  return IsLatitude(b) && grid_->ForwardPoint(b, l, factors);
}

bool TMinnesota_OMProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  return grid_->InversePoint(n, e, factors);
}

FormulaView TMinnesota_OMProj::Formulas() const { return ViewOf(*grid_); }

}  // namespace zel_cs::geomath
