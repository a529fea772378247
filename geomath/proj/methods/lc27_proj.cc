#include "geomath/proj/methods/lc27_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/lc27_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/state_plane_1927.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {
constexpr ParamRow TLC27Proj::kParams[] = {
    {"L1", Quantity::coefficient, &TLC27Proj::L1_, ParamUnit::surveyFeet},
    {"L2", Quantity::coefficient, &TLC27Proj::L2_, ParamUnit::arcSeconds},
    {"L3", Quantity::coefficient, &TLC27Proj::L3_, ParamUnit::surveyFeet},
    {"L4", Quantity::coefficient, &TLC27Proj::L4_, ParamUnit::surveyFeet},
    {"L5", Quantity::coefficient, &TLC27Proj::L5_},
    {"L6", Quantity::coefficient, &TLC27Proj::L6_},
    {"L78", Quantity::coefficient, &TLC27Proj::L78_, ParamUnit::arcSeconds},
    {"L9", Quantity::coefficient, &TLC27Proj::L9_},
    {"L10", Quantity::coefficient, &TLC27Proj::L10_},
    {"L11", Quantity::coefficient, &TLC27Proj::L11_},
    {"Zone number", Quantity::zone, &TLC27Proj::zone_},
};

int TLC27Proj::Zone() const { return ParamAsInt(zone_); }

std::span<const ParamRow> TLC27Proj::Params() const { return kParams; }

TLC27Proj::TLC27Proj() : TLC27Proj(0, 0, 0, 0, 1.0, 0, 0, 0, 0, 0, 0) {}

TLC27Proj::TLC27Proj(double L1, double L2, double L3, double L4, double L5, double L6, double L78,
                     double L9, double L10, double L11, int zone)
    : TGeoProj(ProjTypeLC27, kParams, kClarke1866A, kClarke1866InvF),
      L1_(L1),
      L2_(L2),
      L3_(L3),
      L4_(L4),
      L5_(L5),
      L6_(L6),
      L78_(L78),
      L9_(L9),
      L10_(L10),
      L11_(L11),
      zone_(zone) {
  TLC27Proj::Prepare();
}

double TLC27Proj::FEast() const { return L1_ * kUsSurveyFoot; }

bool TLC27Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(LatitudeFromRectifying1927(L78_), -L2_ / kArcSecondsPerRad, b0, l0, db,
                           dl);
}

void TLC27Proj::Prepare() {
  *formulas_ = {L1_,
                L2_,
                L3_,
                L4_,
                L5_,
                L6_,
                L78_,
                L9_ * 1e-16,
                L10_ * 1e-24,
                L11_ * 1e-32,
                {ell_.a, ell_.e2}};
}

bool TLC27Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const Lc27Formulas::Place at = ForwardOne(*formulas_, b, l);
  if (factors) formulas_->Factors<simd::Scalar>(at, factors->scale, factors->convergence);
  return true;
}

bool TLC27Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const Lc27Formulas::Place at = InverseOne(*formulas_, n, e);
  if (factors) formulas_->Factors<simd::Scalar>(at, factors->scale, factors->convergence);
  return true;
}

FormulaView TLC27Proj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
