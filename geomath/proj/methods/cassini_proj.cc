#include "geomath/proj/methods/cassini_proj.h"

#include "geomath/proj/methods/formulas/cassini_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

constexpr ParamRow TCassiniProj::kParams[] = {
    {"Lat0", Quantity::latitude, &TCassiniProj::phi0_},
    {"Lon0", Quantity::longitude, &TCassiniProj::lambda0_},
    {"AxisAzimuth", Quantity::azimuth, &TCassiniProj::theta_},
    {"East0", Quantity::easting, &TCassiniProj::fEast_},
    {"North0", Quantity::northing, &TCassiniProj::fNorth_},
};

std::span<const ParamRow> TCassiniProj::Params() const { return kParams; }

TCassiniProj::TCassiniProj() : TCassiniProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0, 0) {}

TCassiniProj::TCassiniProj(double a, double invF, double lat0, double lon0, double axisAzimuth,
                           double fEast, double fNorth)
    : TGeoProj(ProjTypeCassini, kParams, a, invF),
      phi0_(lat0),
      lambda0_(lon0),
      theta_(axisAzimuth),
      fEast_(fEast),
      fNorth_(fNorth) {
  TCassiniProj::Prepare();
}

bool TCassiniProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TCassiniProj::Prepare() { *formulas_ = {{ell_, phi0_, lambda0_, theta_}, 1, fEast_, fNorth_}; }

bool TCassiniProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  formulas_->Forward<simd::Scalar>(b, l);
  return true;
}

bool TCassiniProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  formulas_->Inverse<simd::Scalar>(n, e);
  return true;
}

FormulaView TCassiniProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
