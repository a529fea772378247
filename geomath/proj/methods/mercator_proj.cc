#include "geomath/proj/methods/mercator_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/mercator_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Equation numbers are Snyder 1987; his scale on the equator is k0_ here.
namespace zel_cs::geomath {
namespace {

constexpr double kPolarGap = 1e-6;  // radians

}  // namespace

constexpr ParamRow TMercatorProj::kParams[] = {
    {"Lon0", Quantity::longitude, &TMercatorProj::lambda0_},
    {"Lat0", Quantity::latitude, &TMercatorProj::phi0_},
    {"FEast", Quantity::easting, &TMercatorProj::fEast_},
    {"FNorth", Quantity::northing, &TMercatorProj::fNorth_},
};

std::span<const ParamRow> TMercatorProj::Params() const { return kParams; }

TMercatorProj::TMercatorProj() : TMercatorProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TMercatorProj::TMercatorProj(double a, double invF, double lon0, double lat0, double fEast,
                             double fNorth)
    : TGeoProj(ProjTypeMercator, kParams, a, invF),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TMercatorProj::Prepare();
}

bool TMercatorProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  b0 = 0;
  l0 = lambda0_;
  db = kHalfPi - kPolarGap;
  dl = kPi;
  return true;
}

void TMercatorProj::Prepare() {
  k0_ = ParallelRadius(Sin(phi0_), Cos(phi0_), ell_.e2);
  *formulas_ = {.latitude = ConformalLatitude(ell_),
                .lambda0 = lambda0_,
                .fEast = fEast_,
                .fNorth = fNorth_,
                .aK0 = ell_.a * k0_};
}

PointFactors TMercatorProj::FactorsAt(double sinPhi, double cosPhi) const {
  return {.scale = k0_ / ParallelRadius(sinPhi, cosPhi, ell_.e2), .convergence = 0};  // 7-8
}

bool TMercatorProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!(std::abs(b) < kHalfPi)) return false;
  const auto [sinPhi, cosPhi] = ForwardOne(*formulas_, b, l);
  if (factors) *factors = FactorsAt(sinPhi, cosPhi);
  return true;
}

bool TMercatorProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  InverseOne(*formulas_, n, e);
  if (!factors) return true;
  const auto [sinPhi, cosPhi] = SineCosineOne(n);
  *factors = FactorsAt(sinPhi, cosPhi);
  return true;
}

FormulaView TMercatorProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
