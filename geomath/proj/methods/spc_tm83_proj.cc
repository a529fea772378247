#include "geomath/proj/methods/spc_tm83_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/stem_tm_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

constexpr ParamRow TSPC_TM83Proj::kParams[] = {
    {"CentralMeridian", Quantity::longitude, &TSPC_TM83Proj::lambda0_},
    {"Scale", Quantity::scale, &TSPC_TM83Proj::k0_},
    {"Lat0", Quantity::latitude, &TSPC_TM83Proj::phi0_},
    {"East0", Quantity::easting, &TSPC_TM83Proj::fEast_},
    {"North0", Quantity::northing, &TSPC_TM83Proj::fNorth_},
    {"Zone number", Quantity::zone, &TSPC_TM83Proj::zone_},
};

std::span<const ParamRow> TSPC_TM83Proj::Params() const { return kParams; }

TSPC_TM83Proj::TSPC_TM83Proj() : TSPC_TM83Proj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, 0) {}

TSPC_TM83Proj::TSPC_TM83Proj(double a, double invF, double cm, double scale, double lat0,
                             double fEast, double fNorth, int zone)
    : TGeoProj(ProjTypeSPC_TM83, kParams, a, invF),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth),
      zone_(zone) {
  TSPC_TM83Proj::Prepare();
}

int TSPC_TM83Proj::Zone() const { return ParamAsInt(zone_); }

bool TSPC_TM83Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TSPC_TM83Proj::Prepare() { *formulas_ = {{ell_, k0_, phi0_}, lambda0_, fEast_, fNorth_}; }

bool TSPC_TM83Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const auto [north, east] = formulas_->tm.Forward(b, SetValue(l - lambda0_, 1), factors);
  b = fNorth_ + north;
  l = fEast_ + east;
  return true;
}

bool TSPC_TM83Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const auto [phi, deltaLambda] = formulas_->tm.Inverse(n - fNorth_, e - fEast_, factors);
  n = phi;
  e = lambda0_ + deltaLambda;
  return true;
}

FormulaView TSPC_TM83Proj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
