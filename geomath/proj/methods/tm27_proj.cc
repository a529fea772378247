#include "geomath/proj/methods/tm27_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/tm27_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/state_plane_1927.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {
constexpr ParamRow TTM27Proj::kParams[] = {
    {"L1", Quantity::coefficient, &TTM27Proj::L1_, ParamUnit::surveyFeet},
    {"L2", Quantity::coefficient, &TTM27Proj::L2_, ParamUnit::arcSeconds},
    {"L34", Quantity::coefficient, &TTM27Proj::L34_, ParamUnit::arcSeconds},
    {"L5", Quantity::coefficient, &TTM27Proj::L5_},
    {"L6", Quantity::coefficient, &TTM27Proj::L6_},
    {"Zone number", Quantity::zone, &TTM27Proj::zone_},
};

int TTM27Proj::Zone() const { return ParamAsInt(zone_); }

std::span<const ParamRow> TTM27Proj::Params() const { return kParams; }

TTM27Proj::TTM27Proj() : TTM27Proj(0, 0, 0, 1.0, 0, 0) {}

TTM27Proj::TTM27Proj(double L1, double L2, double L34, double L5, double L6, int zone)
    : TGeoProj(ProjTypeTM27, kParams, kClarke1866A, kClarke1866InvF),
      L1_(L1),
      L2_(L2),
      L34_(L34),
      L5_(L5),
      L6_(L6),
      zone_(zone) {
  TTM27Proj::Prepare();
}

double TTM27Proj::FEast() const { return L1_ * kUsSurveyFoot; }

bool TTM27Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(-L2_ / kArcSecondsPerRad, b0, l0, db, dl);
}

void TTM27Proj::Prepare() {
  constexpr double kCubic = 1e-15;  // of L6, whose unit is 10⁵ feet
  *formulas_ = {L1_, L2_, L34_, L5_, L6_ * kCubic, L5_ / kUsSurveyFoot, {ell_.a, ell_.e2}};
}

bool TTM27Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const Tm27Formulas::Place at = ForwardOne(*formulas_, b, l);
  if (factors) formulas_->Factors<simd::Scalar>(at, factors->scale, factors->convergence);
  return true;
}

bool TTM27Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const Tm27Formulas::Place at = InverseOne(*formulas_, n, e);
  if (factors) formulas_->Factors<simd::Scalar>(at, factors->scale, factors->convergence);
  return true;
}

FormulaView TTM27Proj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
