#include "geomath/proj/methods/utm_proj.h"

#include <cmath>

#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/formulas/utm_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/meridian_series.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

// Point scale, and convergence with its sign from the longitude difference before it is folded.
PointFactors FactorsAt(double phi, double deltaLambda, double k0, const TmLatitude& at, double L) {
  const double size = std::abs(TmConvergence(at, L));
  const bool east = deltaLambda >= 0, south = phi < 0;
  return {.scale = k0 * TmScale(at, L), .convergence = east != south ? size : -size};
}

}  // namespace

constexpr ParamRow TUTMProj::kParams[] = {
    {"Central Meridian", Quantity::longitude, &TUTMProj::lambda0_},
    {"Scale", Quantity::scale, &TUTMProj::k0_},
    {"Lat0", Quantity::latitude, &TUTMProj::phi0_},
    {"East0", Quantity::easting, &TUTMProj::fEast_},
    {"North0", Quantity::northing, &TUTMProj::fNorth_},
};

std::span<const ParamRow> TUTMProj::Params() const { return kParams; }

TUTMProj::TUTMProj() : TUTMProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0) {}

TUTMProj::TUTMProj(double a, double invF, double cm, double scale, double lat0, double fEast,
                   double fNorth)
    : TGeoProj(ProjTypeTM, kParams, a, invF),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TUTMProj::Prepare();
}

bool TUTMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TUTMProj::Prepare() {
  const MeridianSeries series(ell_);
  UtmFormulas& f = *utm_;
  f = {.lambda0 = lambda0_,
       .fEast = fEast_,
       .fNorth = fNorth_,
       .e2 = ell_.e2,
       .ep2 = ell_.ep2,
       .aK0 = k0_ * ell_.a,
       .rK0 = k0_ * series.r,
       .u = {series.u2, series.u4, series.u6},
       .footpoint = series.footpoint,
       .forwardOrigin = 0,
       .inverseOrigin = 0};
  f.forwardOrigin = f.ForwardArc(phi0_, Sin(phi0_), Cos(phi0_));
  f.inverseOrigin = f.rK0 * series.arc(phi0_);
}

bool TUTMProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b, deltaLambda = l - lambda0_;
  const auto [at, L] = ForwardOne(*utm_, b, l);
  if (factors) *factors = FactorsAt(phi, deltaLambda, k0_, at, L);
  return true;
}

bool TUTMProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  auto [sinPhi, cosPhi, step] = InverseOne(*utm_, n, e);
  if (factors) {
    const double phi = n, deltaLambda = e - lambda0_;
    if (std::abs(step.latitude) < kMaxSmallAngle)
      AddSmallAngle<-1>(step.latitude, sinPhi, cosPhi);
    else
      simd::Scalar::SinCos(phi, sinPhi, cosPhi);
    const double L = FoldTurn(deltaLambda) * cosPhi;
    *factors = FactorsAt(phi, deltaLambda, k0_, TmLatitude(sinPhi, cosPhi, ell_.ep2), L);
  }
  return true;
}

FormulaView TUTMProj::Formulas() const { return ViewOf(*utm_); }

}  // namespace zel_cs::geomath
