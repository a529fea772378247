#include "geomath/proj/methods/double_ster_proj.h"

#include <iterator>

#include "geomath/proj/methods/formulas/double_ster_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

constexpr ParamRow TDoubleSter::kParams[] = {
    {"Lat0", Quantity::latitude, &TDoubleSter::phi0_},
    {"Lon0", Quantity::longitude, &TDoubleSter::lambda0_},
    {"Scale", Quantity::scale, &TDoubleSter::k0_},
    {"East0", Quantity::easting, &TDoubleSter::fEast_},
    {"North0", Quantity::northing, &TDoubleSter::fNorth_},
};

std::span<const ParamRow> TDoubleSter::Params() const { return kParams; }

TDoubleSter::TDoubleSter() : TDoubleSter(kWgs84A, kWgs84InvF, 0, 0, 1.0, 0, 0) {}

TDoubleSter::TDoubleSter(double a, double invF, double lat0, double lon0, double scale,
                         double fEast, double fNorth)
    : TDoubleSter(ProjTypeDoubleSter, a, invF, lat0, lon0, scale, fEast, fNorth) {}

TDoubleSter::TDoubleSter(ProjType type, double a, double invF, double lat0, double lon0,
                         double scale, double fEast, double fNorth)
    : TGeoProj(type, kParams, a, invF),
      phi0_(lat0),
      lambda0_(lon0),
      k0_(scale),
      fEast_(fEast),
      fNorth_(fNorth) {
  TDoubleSter::Prepare();
}

bool TDoubleSter::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TDoubleSter::Prepare() { *formulas_ = {{ell_, phi0_, lambda0_, k0_}, fEast_, fNorth_}; }

bool TDoubleSter::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const auto image = ForwardOne(*formulas_, b, l);
  if (factors) *factors = formulas_->plane.Factors(image);
  return true;
}

bool TDoubleSter::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const auto vector = InverseOne(*formulas_, n, e);
  if (factors) *factors = formulas_->plane.Factors(vector, n);
  return true;
}

FormulaView TDoubleSter::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
