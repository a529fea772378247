#include "geomath/proj/methods/tm_nz.h"

#include "geomath/proj/methods/formulas/tm_nz_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDefaultGridScale = 0.999998261;

}  // namespace

constexpr ParamRow TTTMNZ::kParams[] = {
    {"Central Meridian", Quantity::longitude, &TTTMNZ::lambda0_},
    {"Scale", Quantity::scale, &TTTMNZ::k0_},
    {"Lat0", Quantity::latitude, &TTTMNZ::phi0_},
    {"East0", Quantity::easting, &TTTMNZ::fEast_},
    {"North0", Quantity::northing, &TTTMNZ::fNorth_},
    {"Grid scale", Quantity::scale, &TTTMNZ::gridScale_},
};

std::span<const ParamRow> TTTMNZ::Params() const { return kParams; }

TTTMNZ::TTTMNZ() : TTTMNZ(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, kDefaultGridScale) {}

TTTMNZ::TTTMNZ(double a, double invF, double cm, double scale, double lat0, double fEast,
               double fNorth, double gridScale)
    : TUTMProj(a, invF, cm, scale, lat0, fEast, fNorth), gridScale_(gridScale) {
  paramCount_ = static_cast<int>(std::size(kParams));
  TTTMNZ::Prepare();
}

void TTTMNZ::Prepare() {
  TUTMProj::Prepare();
  *formulas_ = {*utm_, {gridScale_, fEast_, fNorth_}};
}

bool TTTMNZ::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!TUTMProj::ProjectPoint(b, l, factors)) return false;
  formulas_->grid.Apply(b, l);
  if (factors) factors->scale /= gridScale_;
  return true;
}

bool TTTMNZ::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  formulas_->grid.Undo(n, e);
  if (!TUTMProj::UnprojectPoint(n, e, factors)) return false;
  if (factors) factors->scale /= gridScale_;
  return true;
}

FormulaView TTTMNZ::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
