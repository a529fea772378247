#include "geomath/proj/methods/lc_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/lambert_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Symbols of Snyder 1987 and here:
//   φS φN  phiS_ phiN_     standard parallels       ρ  rho    cone radius, metres
//   φ0 λ0  phi0_ lambda0_  origin                   θ  theta  angle at the apex
namespace zel_cs::geomath {

constexpr ParamRow TLCProj::kParams[] = {
    {"SouthLat", Quantity::latitude, &TLCProj::phiS_,
     BeforePrepare<TLCProj, &TLCProj::RefreshSouth>()},
    {"NorthLat", Quantity::latitude, &TLCProj::phiN_,
     BeforePrepare<TLCProj, &TLCProj::RefreshNorth>()},
    {"Lon0", Quantity::longitude, &TLCProj::lambda0_},
    {"Lat0", Quantity::latitude, &TLCProj::phi0_,
     BeforePrepare<TLCProj, &TLCProj::RefreshOrigin>()},
    {"East0", Quantity::easting, &TLCProj::fEast_},
    {"North0", Quantity::northing, &TLCProj::fNorth_},
    {"Scale", Quantity::scale, &TLCProj::k0_},
};

std::span<const ParamRow> TLCProj::Params() const { return kParams; }

TLCProj::TLCProj() : TLCProj(kWgs84A, kWgs84InvF, 0, kPi / 6, 0, 0, 0, 0, 1.0) {}

TLCProj::TLCProj(double a, double invF, double southLat, double northLat, double lon0, double lat0,
                 double fEast, double fNorth, double scale)
    : TGeoProj(ProjTypeLC, kParams, a, invF),
      phiS_(southLat),
      phiN_(northLat),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth),
      k0_(scale),
      sinS_(Sin(southLat)),
      cosS_(Cos(southLat)),
      sinN_(Sin(northLat)),
      cosN_(Cos(northLat)),
      sin0_(Sin(lat0)) {
  TLCProj::Prepare();
}

bool TLCProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

double TLCProj::ConeConstant() const { return formulas_->cone.n(); }

void TLCProj::RefreshSouth() {
  sinS_ = Sin(phiS_);
  cosS_ = Cos(phiS_);
}

void TLCProj::RefreshNorth() {
  sinN_ = Sin(phiN_);
  cosN_ = Cos(phiN_);
}

void TLCProj::RefreshOrigin() { sin0_ = Sin(phi0_); }

void TLCProj::Prepare() {
  const LambertCone cone(ell_, {phiS_, sinS_, cosS_}, {phiN_, sinN_, cosN_}, k0_);
  const double sin0 = Sin(phi0_), rho0 = cone.Radius(phi0_, sin0);
  *formulas_ = {
      {.cone = cone, .lambda0 = lambda0_, .fEast = fEast_, .fNorth = fNorth_, .rho0 = rho0},
      sin0 == sin0_ ? rho0 : cone.Radius(phi0_, sin0_)};
}

bool TLCProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (std::abs(b) == kHalfPi) return false;
  const auto [at, sinPhi, cosPhi] = ForwardOne(*formulas_, b, l);
  if (factors) factors->scale = formulas_->cone.Scale(at.rho, sinPhi, cosPhi);
  return true;
}

bool TLCProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const LambertCone::Polar at = InverseOne(*formulas_, n, e);
  if (!factors) return true;
  const auto [sinPhi, cosPhi] = SineCosineOne(n);
  factors->scale = formulas_->cone.Scale(at.rho, sinPhi, cosPhi);
  return true;
}

FormulaView TLCProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
