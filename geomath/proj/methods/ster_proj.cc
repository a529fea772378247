#include "geomath/proj/methods/ster_proj.h"

#include <cmath>

#include "geomath/proj/methods/formulas/ster_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Equation numbers are Snyder 1987. Symbols there and here:
//   φ0 λ0  phi0_ lambda0_  origin (his φ1)        χ  chi    conformal latitude
namespace zel_cs::geomath {
namespace {

constexpr double kPolarLimit = kHalfPi - 1e-12;  // origins beyond it are poles

}  // namespace

constexpr ParamRow TSterProj::kParams[] = {
    {"Lat0", Quantity::latitude, &TSterProj::phi0_},
    {"Lon0", Quantity::longitude, &TSterProj::lambda0_},
    {"Scale", Quantity::scale, &TSterProj::k0_},
    {"East0", Quantity::easting, &TSterProj::fEast_},
    {"North0", Quantity::northing, &TSterProj::fNorth_},
};

std::span<const ParamRow> TSterProj::Params() const { return kParams; }

TSterProj::TSterProj() : TSterProj(kWgs84A, kWgs84InvF, 0, 0, 1.0, 0, 0) {}

TSterProj::TSterProj(double a, double invF, double lat0, double lon0, double scale, double fEast,
                     double fNorth)
    : TGeoProj(ProjTypeSter, kParams, a, invF),
      phi0_(lat0),
      lambda0_(lon0),
      k0_(scale),
      fEast_(fEast),
      fNorth_(fNorth) {
  TSterProj::Prepare();
}

bool TSterProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TSterProj::Prepare() {
  isPolar_ = std::abs(phi0_) >= kPolarLimit;
  const ConformalLatitude latitude(ell_);
  const double sin0 = Sin(phi0_), cos0 = Cos(phi0_), e = ell_.e, diameter = 2 * ell_.a * k0_;
  const SineCosine chi1 = latitude.FromGeodetic(sin0, cos0);
  *oblique_ = {.latitude = latitude,
               .chi1 = chi1,
               .obliqueA = diameter * ParallelRadius(sin0, cos0, ell_.e2) / chi1.cos,
               .lambda0 = lambda0_,
               .fEast = fEast_,
               .fNorth = fNorth_};
  *polar_ = {.latitude = latitude,
             .series = ConformalSeries(ell_.e2),
             .sign = isPolar_ && phi0_ < 0 ? -1.0 : 1.0,
             .polarRadius = diameter / std::sqrt(Pow(1 + e, 1 + e) * Pow(1 - e, 1 - e)),
             .lambda0 = lambda0_,
             .fEast = fEast_,
             .fNorth = fNorth_};
}

bool TSterProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (isPolar_) {
    const auto [sinPhi, cosPhi, rho] = ForwardOne(*polar_, b, l);
    if (factors)
      factors->scale = rho / (ell_.a * ParallelRadius(sinPhi, cosPhi, ell_.e2));  // 21-32
    return true;
  }
  double north = b, east = l;
  const auto [sinPhi, cosPhi, cosChi, A] = ForwardOne(*oblique_, north, east);
  if (sinPhi == 1 && phi0_ != 0) return false;
  b = north;
  l = east;
  if (factors)
    factors->scale = A * cosChi / (ell_.a * ParallelRadius(sinPhi, cosPhi, ell_.e2));  // 21-26
  return true;
}

bool TSterProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  double radius;  // of the parallel on the map, unrolled
  if (isPolar_) {
    radius = InverseOne(*polar_, n, e).rho;
  } else {
    const auto image = InverseOne(*oblique_, n, e);
    radius = image.A * image.cosChi;
  }
  if (!factors) return true;
  const auto [sinPhi, cosPhi] = SineCosineOne(n);
  factors->scale = radius / (ell_.a * ParallelRadius(sinPhi, cosPhi, ell_.e2));
  return true;
}

FormulaView TSterProj::Formulas() const { return isPolar_ ? ViewOf(*polar_) : ViewOf(*oblique_); }

}  // namespace zel_cs::geomath
