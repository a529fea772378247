#include "geomath/proj/methods/albers_ea_conic_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/albers_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

// Equation numbers are Snyder 1987.
namespace zel_cs::geomath {
namespace {

constexpr double kEqualParallels = 1e-10;  // radians

}  // namespace

constexpr ParamRow TAlbersEAConicProj::kParams[] = {
    {"SouthLat", Quantity::latitude, &TAlbersEAConicProj::phiS_},
    {"NorthLat", Quantity::latitude, &TAlbersEAConicProj::phiN_},
    {"Lon0", Quantity::longitude, &TAlbersEAConicProj::lambda0_},
    {"Lat0", Quantity::latitude, &TAlbersEAConicProj::phi0_},
    {"East0", Quantity::easting, &TAlbersEAConicProj::fEast_},
    {"North0", Quantity::northing, &TAlbersEAConicProj::fNorth_},
};

std::span<const ParamRow> TAlbersEAConicProj::Params() const { return kParams; }

TAlbersEAConicProj::TAlbersEAConicProj()
    : TAlbersEAConicProj(kWgs84A, kWgs84InvF, 0, kPi / 6, 0, 0, 0, 0) {}

TAlbersEAConicProj::TAlbersEAConicProj(double a, double invF, double southLat, double northLat,
                                       double lon0, double lat0, double fEast, double fNorth)
    : TGeoProj(ProjTypeLC, kParams, a, invF),
      phiS_(southLat),
      phiN_(northLat),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TAlbersEAConicProj::Prepare();
}

bool TAlbersEAConicProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TAlbersEAConicProj::Prepare() {
  const double e2 = ell_.e2, e4 = e2 * e2, e6 = e4 * e2;
  AlbersFormulas& f = *formulas_;
  f = {.a = ell_.a,
       .e = ell_.e,
       .e2 = e2,
       .lambda0 = lambda0_,
       .fEast = fEast_,
       .fNorth = fNorth_,
       .n = 0,
       .C = 0,
       .rho0 = 0,
       .qPole = 0,
       .authalic = {e2 / 3 + 31.0 / 180 * e4 + 517.0 / 5040 * e6,  // 3-18
                    23.0 / 360 * e4 + 251.0 / 3780 * e6, 761.0 / 45360 * e6},
       .nearSphere = ConformalLatitude(ell_).ServesColumns()};
  const auto q = [&f](double s) { return f.AuthalicQ<simd::Scalar>(s); };
  const double sin1 = Sin(phiS_), sin2 = Sin(phiN_);
  const double m1 = ParallelRadius(sin1, Cos(phiS_), e2);
  const double m2 = ParallelRadius(sin2, Cos(phiN_), e2);
  const bool oneParallel = std::abs(phiS_ - phiN_) < kEqualParallels;
  f.n = oneParallel ? sin1 : (m1 * m1 - m2 * m2) / (q(sin2) - q(sin1));  // 14-14
  f.C = m1 * m1 + f.n * q(sin1);                                         // 14-13
  f.rho0 = ell_.a * std::sqrt(f.C - f.n * q(Sin(phi0_))) / f.n;          // 14-12a
  f.qPole = q(1);
}

bool TAlbersEAConicProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  double north = b, east = l;
  if (!ForwardOne(*formulas_, north, east)) return false;
  b = north;
  l = east;
  return true;
}

bool TAlbersEAConicProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  double phi = n, lambda = e;
  if (!InverseOne(*formulas_, phi, lambda)) return false;
  n = phi;
  e = lambda;
  return true;
}

FormulaView TAlbersEAConicProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
