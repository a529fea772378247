#include "geomath/proj/methods/nzmg_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/nzmg_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kInternationalA = 6378388;  // metres
constexpr double kInternationalInvF = 297;
// |dz/dζ| over the radius of the parallel, both in units of a.
double PointScale(nzmg::Complex zeta, double phi, double e2) {
  const double c = SineCosineOne(phi).cos, sin2 = 1 - c * c;
  return std::sqrt(nzmg::Norm(nzmg::Slope(zeta)) * (1 - e2 * sin2)) / c;
}

}  // namespace

constexpr ParamRow TNZMGProj::kParams[] = {
    {"Lat0", Quantity::latitude, &TNZMGProj::phi0_},
    {"Lon0", Quantity::longitude, &TNZMGProj::lambda0_},
    {"East0", Quantity::easting, &TNZMGProj::fEast_},
    {"North0", Quantity::northing, &TNZMGProj::fNorth_},
};

std::span<const ParamRow> TNZMGProj::Params() const { return kParams; }

TNZMGProj::TNZMGProj()
    : TNZMGProj(kInternationalA, kInternationalInvF, -41 * kRadPerDeg, 173 * kRadPerDeg, 2510000,
                6023150) {}

TNZMGProj::TNZMGProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth)
    : TGeoProj(ProjTypeNZMG, kParams, a, invF),
      phi0_(lat0),
      lambda0_(lon0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TNZMGProj::Prepare();
}

bool TNZMGProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TNZMGProj::Prepare() { *formulas_ = {ell_.a, phi0_, lambda0_, fEast_, fNorth_}; }

bool TNZMGProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b;
  const nzmg::Complex zeta = formulas_->Forward<simd::Scalar>(b, l);
  if (factors) factors->scale = PointScale(zeta, phi, ell_.e2);
  return true;
}

bool TNZMGProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const nzmg::Complex zeta = formulas_->Inverse<simd::Scalar>(n, e);
  if (factors) factors->scale = PointScale(zeta, n, ell_.e2);
  return true;
}

FormulaView TNZMGProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
