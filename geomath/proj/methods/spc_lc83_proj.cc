#include "geomath/proj/methods/spc_lc83_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/lambert_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Stem 1989 writes the cone with hyperbolic functions and finds the latitude by three Newton steps on
// its sine; both lead to the numbers of LambertCone. His Rb is the rho0 of its formulas, his Nb fNorth_.
namespace zel_cs::geomath {

constexpr ParamRow TSPC_LC83Proj::kParams[] = {
    {"SouthLat", Quantity::latitude, &TSPC_LC83Proj::phiS_},
    {"NorthLat", Quantity::latitude, &TSPC_LC83Proj::phiN_},
    {"Lon0", Quantity::longitude, &TSPC_LC83Proj::lambda0_},
    {"Lat0", Quantity::latitude, &TSPC_LC83Proj::phi0_},
    {"East0", Quantity::easting, &TSPC_LC83Proj::fEast_},
    {"North0", Quantity::northing, &TSPC_LC83Proj::fNorth_},
    {"Zone number", Quantity::zone, &TSPC_LC83Proj::zone_},
};

int TSPC_LC83Proj::Zone() const { return ParamAsInt(zone_); }

std::span<const ParamRow> TSPC_LC83Proj::Params() const { return kParams; }

TSPC_LC83Proj::TSPC_LC83Proj() : TSPC_LC83Proj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, 0, 0) {
  type_ = ProjTypeTM;  // Kept
}

TSPC_LC83Proj::TSPC_LC83Proj(double a, double invF, double southLat, double northLat, double lon0,
                             double lat0, double fEast, double fNorth, int zone)
    : TGeoProj(ProjTypeSPC_LC83, kParams, a, invF),
      phiS_(southLat),
      phiN_(northLat),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth),
      zone_(zone) {
  TSPC_LC83Proj::Prepare();
}

bool TSPC_LC83Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TSPC_LC83Proj::Prepare() {
  const LambertCone cone(ell_, phiS_, phiN_, 1.0);
  *formulas_ = {.cone = cone,
                .lambda0 = lambda0_,
                .fEast = fEast_,
                .fNorth = fNorth_,
                .rho0 = cone.Radius(phi0_)};
}

bool TSPC_LC83Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!(std::abs(b) < kHalfPi)) return false;
  const auto [at, sinPhi, cosPhi] = ForwardOne(*formulas_, b, l);
  if (factors) *factors = {formulas_->cone.Scale(at.rho, sinPhi, cosPhi), at.theta};
  return true;
}

bool TSPC_LC83Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const LambertCone::Polar at = InverseOne(*formulas_, n, e);
  if (!factors) return true;
  const auto [sinPhi, cosPhi] = SineCosineOne(n);
  *factors = {formulas_->cone.Scale(at.rho, sinPhi, cosPhi), at.theta};
  return true;
}

FormulaView TSPC_LC83Proj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
