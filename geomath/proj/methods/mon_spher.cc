#include "geomath/proj/methods/mon_spher.h"

#include "geomath/proj/methods/formulas/mon_spher_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

// Scale of the sphere on the ellipsoid, times that of its transverse Mercator (Snyder 1987, 8-4).
double PointScale(const MonSpherFormulas& f, const Ellipsoid& ell, double sinPhi, double cosPhi,
                  const MonSpherFormulas::Position& at) {
  const double m = ParallelRadius(sinPhi, cosPhi, ell.e2);
  return f.R * f.sphere.alpha * at.cosChi / (ell.a * m * at.cosSide);
}

}  // namespace

constexpr ParamRow TMonSpher::kParams[] = {
    {"Lat0", Quantity::latitude, &TMonSpher::phi0_},
    {"Lon0", Quantity::longitude, &TMonSpher::lambda0_},
    {"LatNormal", Quantity::latitude, &TMonSpher::phiN_},
    {"_k1", Quantity::scale, &TMonSpher::k1_},
    {"Scale", Quantity::scale, &TMonSpher::k0_},
    {"East0", Quantity::easting, &TMonSpher::fEast_},
    {"North0", Quantity::northing, &TMonSpher::fNorth_},
    {"AxisAzimuth", Quantity::azimuth, &TMonSpher::theta_},
};

std::span<const ParamRow> TMonSpher::Params() const { return kParams; }

TMonSpher::TMonSpher() : TMonSpher(kWgs84A, kWgs84InvF, 0, 0, 0, 1.0, 1.0, 0, 0, 0) {}

TMonSpher::TMonSpher(double a, double invF, double lat0, double lon0, double latNormal, double k1,
                     double scale, double fEast, double fNorth, double axisAzimuth)
    : TGeoProj(ProjTypeMonSpher, kParams, a, invF),
      phi0_(lat0),
      lambda0_(lon0),
      phiN_(latNormal),
      k1_(k1),
      k0_(scale),
      fEast_(fEast),
      fNorth_(fNorth),
      theta_(axisAzimuth) {
  TMonSpher::Prepare();
}

bool TMonSpher::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TMonSpher::Prepare() {
  const ConformalSphere sphere(ell_, phiN_);
  *formulas_ = {.sphere = sphere,
                .lambda0 = lambda0_,
                .fEast = fEast_,
                .fNorth = fNorth_,
                .R = k1_ * k0_ * sphere.R,
                .chi0 = sphere.Latitude(phi0_),
                .sinTheta = Sin(theta_),
                .cosTheta = Cos(theta_)};
}

bool TMonSpher::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  double n = b, e = l;
  const auto [at, sinPhi, cosPhi, exists] = ForwardOne(*formulas_, n, e);
  if (!exists) return false;
  if (factors) factors->scale = PointScale(*formulas_, ell_, sinPhi, cosPhi, at);
  b = n;
  l = e;
  return true;
}

bool TMonSpher::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const MonSpherFormulas::Position at = InverseOne(*formulas_, n, e);
  if (!factors) return true;
  const auto [sinPhi, cosPhi] = SineCosineOne(n);
  factors->scale = PointScale(*formulas_, ell_, sinPhi, cosPhi, at);
  return true;
}

FormulaView TMonSpher::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
