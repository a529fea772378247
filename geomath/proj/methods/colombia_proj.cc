#include "geomath/proj/methods/colombia_proj.h"

#include "geomath/base/angle.h"
#include "geomath/base/curvature.h"
#include "geomath/proj/methods/formulas/colombia_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kHalfExtent = kPi / 360;  // half a degree, 55 km

}  // namespace

constexpr ParamRow TColombiaProj::kParams[] = {
    {"Lat0", Quantity::latitude, &TColombiaProj::phi0_},
    {"Lon0", Quantity::longitude, &TColombiaProj::lambda0_},
    {"East0", Quantity::easting, &TColombiaProj::fEast_},
    {"North0", Quantity::northing, &TColombiaProj::fNorth_},
};

std::span<const ParamRow> TColombiaProj::Params() const { return kParams; }

TColombiaProj::TColombiaProj() : TColombiaProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TColombiaProj::TColombiaProj(double a, double invF, double lat0, double lon0, double fEast,
                             double fNorth)
    : TGeoProj(ProjTypeColombia, kParams, a, invF),
      phi0_(lat0),
      lambda0_(lon0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TColombiaProj::Prepare();
}

bool TColombiaProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  b0 = phi0_;
  l0 = lambda0_;
  db = dl = kHalfExtent;
  return true;
}

void TColombiaProj::Prepare() {
  const double rho0 = MeridianRadius(ell_, phi0_);
  *formulas_ = {.a = ell_.a,
                .e2 = ell_.e2,
                .phi0 = phi0_,
                .lambda0 = lambda0_,
                .fEast = fEast_,
                .fNorth = fNorth_,
                .rho0 = rho0,
                .B = Tan(phi0_) / (2 * rho0 * PrimeVerticalRadius(ell_, phi0_))};
}

bool TColombiaProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  formulas_->Forward<simd::Scalar>(b, l);
  return true;
}

bool TColombiaProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  formulas_->Inverse<simd::Scalar>(n, e);
  return true;
}

FormulaView TColombiaProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
