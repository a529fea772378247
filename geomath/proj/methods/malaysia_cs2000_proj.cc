#include "geomath/proj/methods/malaysia_cs2000_proj.h"

#include "geomath/proj/methods/formulas/cassini_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

constexpr ParamRow TMalaysia_CS2000Proj::kParams[] = {
    {"AxisAzimuth", Quantity::azimuth, &TMalaysia_CS2000Proj::azimuth_},
    {"Scale", Quantity::scale, &TMalaysia_CS2000Proj::k0_},
    {"Lon0", Quantity::longitude, &TMalaysia_CS2000Proj::lambda0_},
    {"Lat0", Quantity::latitude, &TMalaysia_CS2000Proj::phi0_},
};

std::span<const ParamRow> TMalaysia_CS2000Proj::Params() const { return kParams; }

TMalaysia_CS2000Proj::TMalaysia_CS2000Proj()
    : TMalaysia_CS2000Proj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TMalaysia_CS2000Proj::TMalaysia_CS2000Proj(double a, double invF, double axisAzimuth, double scale,
                                           double lon0, double lat0)
    : TGeoProj(ProjTypeMalaysia_CS2000, kParams, a, invF),
      azimuth_(axisAzimuth),
      k0_(scale),
      lambda0_(lon0),
      phi0_(lat0) {
  TMalaysia_CS2000Proj::Prepare();
}

void TMalaysia_CS2000Proj::Prepare() {
  *formulas_ = {{ell_, phi0_, lambda0_, azimuth_}, k0_ > 0 ? k0_ : 1, 0, 0};
}

bool TMalaysia_CS2000Proj::ProjectPoint(double& b, double& l, PointFactors*) const {
  formulas_->Forward<simd::Scalar>(b, l);
  return true;
}

bool TMalaysia_CS2000Proj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  formulas_->Inverse<simd::Scalar>(n, e);
  return true;
}

FormulaView TMalaysia_CS2000Proj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
