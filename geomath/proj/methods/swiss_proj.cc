#include "geomath/proj/methods/swiss_proj.h"

#include "geomath/proj/methods/formulas/swiss_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

double PointScale(const ConformalSphere& sphere, const Ellipsoid& ell, double phi,
                  const SwissFormulas::Position& at) {
  const auto [sinPhi, cosPhi] = SineCosineOne(phi);
  const double m = ParallelRadius(sinPhi, cosPhi, ell.e2);
  return sphere.alpha * sphere.R * at.cosB / (ell.a * m * at.cosBBar);
}

}  // namespace

constexpr ParamRow TSwissProj::kParams[] = {
    {"L0", Quantity::longitude, &TSwissProj::lambda0_},
    {"B0", Quantity::latitude, &TSwissProj::phi0_},
    {"East0", Quantity::easting, &TSwissProj::fEast_},
    {"North0", Quantity::northing, &TSwissProj::fNorth_},
};

std::span<const ParamRow> TSwissProj::Params() const { return kParams; }

TSwissProj::TSwissProj() : TSwissProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TSwissProj::TSwissProj(double a, double invF, double lon0, double lat0, double fEast, double fNorth)
    : TGeoProj(ProjTypeSwiss, kParams, a, invF),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TSwissProj::Prepare();
}

bool TSwissProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TSwissProj::Prepare() {
  const ConformalSphere sphere(ell_, phi0_);
  *formulas_ = {.sphere = sphere,
                .lambda0 = lambda0_,
                .fEast = fEast_,
                .fNorth = fNorth_,
                .sinB0 = Sin(sphere.chi0),
                .cosB0 = Cos(sphere.chi0)};
}

bool TSwissProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!IsLatitude(b)) return false;
  const double phi = b;
  double n = b, e = l;
  const SwissFormulas::Position at = ForwardOne(*formulas_, n, e);
  if (!at.exists) return false;
  if (factors) factors->scale = PointScale(formulas_->sphere, ell_, phi, at);
  b = n;
  l = e;
  return true;
}

bool TSwissProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const SwissFormulas::Position at = InverseOne(*formulas_, n, e);
  if (factors) factors->scale = PointScale(formulas_->sphere, ell_, n, at);
  return true;
}

FormulaView TSwissProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
