#include "geomath/proj/methods/o_mercator_proj.h"

#include <cmath>

#include "geomath/proj/methods/formulas/hotine_grid.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

constexpr ParamRow TOMercatorProj::kParams[] = {
    {"AxisAzimuth", Quantity::azimuth, &TOMercatorProj::azimuth_, ParamUnit::radians},
    {"Scale", Quantity::scale, &TOMercatorProj::k0_},
    {"Lon0", Quantity::longitude, &TOMercatorProj::lambdaC_},
    {"Lat0", Quantity::latitude, &TOMercatorProj::phiC_},
    {"East0", Quantity::easting, &TOMercatorProj::fEast_},
    {"North0", Quantity::northing, &TOMercatorProj::fNorth_},
};

std::span<const ParamRow> TOMercatorProj::Params() const { return kParams; }

TOMercatorProj::TOMercatorProj() : TOMercatorProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, 0) {}

TOMercatorProj::TOMercatorProj(double a, double invF, double azimuth, double scale, double lon0,
                               double lat0, double fEast, double fNorth)
    : HotineProj(ProjTypeOMercator, kParams, a, invF, azimuth, scale, lon0, lat0, fEast, fNorth) {}

bool TOMercatorProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const Hotine& hotine = grid_->Projection();
  if (l != hotine.lambda0) return grid_->ForwardPoint(b, l, factors);

  const Hotine::Projected at = hotine.Project<simd::Scalar>(b, l);
  if (factors) factors->scale = hotine.CylinderScale(at.sinPhi, at.cosPhi);
  grid_->ToGrid({0, at.skew.v}, b, l);
  return true;
}

}  // namespace zel_cs::geomath
