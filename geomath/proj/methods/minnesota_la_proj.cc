#include "geomath/proj/methods/minnesota_la_proj.h"

#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

TMinnesota_LAProj::TMinnesota_LAProj()
    : CountyProj(ProjTypeMinnesota_LA, kWgs84A, kWgs84InvF, CountyParams::Placeholders()) {
  TMinnesota_LAProj::Prepare();
}

TMinnesota_LAProj::TMinnesota_LAProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : CountyProj(ProjTypeMinnesota_LA, a, invF,
                 {lonOrigin, latOrigin, northStdP, southStdP, scale, fNorth, fEast, desElA, desElB,
                  elevationShift, obliqueAngle, geoidHeight}) {
  TMinnesota_LAProj::Prepare();
}

bool TMinnesota_LAProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(params_.latOrigin, params_.lonOrigin, b0, l0, db, dl);
}

void TMinnesota_LAProj::Prepare() {
  const Ellipsoid county = WorkingEllipsoid();
  cone_ = LambertCone(county, params_.southStdP, params_.northStdP, WorkingScale());
  rho0_ = cone_.Radius(params_.latOrigin);
}

bool TMinnesota_LAProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  double north, east;
  if (!cone_.Forward(b, SetValue(l - params_.lonOrigin, 1), rho0_, north, east,
                     factors ? &factors->scale : nullptr, nullptr))
    return false;
  b = params_.fNorth + north;
  l = params_.fEast + east;
  return true;
}

bool TMinnesota_LAProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  double phi, deltaLambda;
  cone_.Inverse(n - params_.fNorth, e - params_.fEast, rho0_, phi, deltaLambda,
                factors ? &factors->scale : nullptr, nullptr);
  n = phi;
  e = params_.lonOrigin + deltaLambda;
  return true;
}

}  // namespace zel_cs::geomath
