#include "geomath/proj/methods/minnesota_la_proj.h"

#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/county_ellipsoid.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TMinnesota_LAProj>> TMinnesota_LAProj::Params() {
  using T = TMinnesota_LAProj;
  static constexpr ParamRow<T> rows[] = {
      {&T::lambda0_, ParamKind::angle},
      {&T::phi0_, ParamKind::angle, &T::Prepare},
      {&T::phiN_, ParamKind::angle, &T::Prepare},
      {&T::phiS_, ParamKind::angle, &T::Prepare},
      {&T::k0_, ParamKind::scale, &T::Prepare},
      {&T::fNorth_, ParamKind::length},
      {&T::fEast_, ParamKind::length},
      {&T::desElA_, ParamKind::length, &T::Prepare},
      {&T::desElB_, ParamKind::length, &T::Prepare},
      {&T::elevationShift_, ParamKind::length, &T::Prepare},
      {&T::obliqueAngle_, ParamKind::angle},
      {&T::geoidHeight_, ParamKind::length, &T::Prepare},
  };
  return rows;
}

TMinnesota_LAProj::TMinnesota_LAProj()
    : TMinnesota_LAProj(kWgs84A, kWgs84InvF, 0, 0, 0, 1.0, 0, 0, 0, kWgs84A, kWgs84A, 0, 0, 0) {}

TMinnesota_LAProj::TMinnesota_LAProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : TGeoProj(ProjTypeMinnesota_LA, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(lonOrigin),
      phi0_(latOrigin),
      phiN_(northStdP),
      phiS_(southStdP),
      k0_(scale),
      fNorth_(fNorth),
      fEast_(fEast),
      desElA_(desElA),
      desElB_(desElB),
      elevationShift_(elevationShift),
      obliqueAngle_(obliqueAngle),
      geoidHeight_(geoidHeight) {
  TMinnesota_LAProj::Prepare();
}

void TMinnesota_LAProj::LatOrigin(double value) {
  phi0_ = value;
  Prepare();
}

void TMinnesota_LAProj::NorthStdP(double value) {
  phiN_ = value;
  Prepare();
}

void TMinnesota_LAProj::SouthStdP(double value) {
  phiS_ = value;
  Prepare();
}

void TMinnesota_LAProj::Scale(double value) {
  k0_ = value;
  Prepare();
}

double TMinnesota_LAProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TMinnesota_LAProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TMinnesota_LAProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TMinnesota_LAProj::Prepare() {
  const Ellipsoid county = CountyEllipsoid(ell_, desElA_, desElB_, elevationShift_, geoidHeight_);
  cone_ = LambertCone(county, phiS_, phiN_, CountyScale(k0_));
  rho0_ = cone_.Radius(phi0_);
}

bool TMinnesota_LAProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  double north, east;
  if (!cone_.Forward(b, SetValue(l - lambda0_, 1), rho0_, north, east,
                     factors ? &factors->scale : nullptr, nullptr))
    return false;
  b = fNorth_ + north;
  l = fEast_ + east;
  return true;
}

bool TMinnesota_LAProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  double phi, deltaLambda;
  cone_.Inverse(n - fNorth_, e - fEast_, rho0_, phi, deltaLambda,
                factors ? &factors->scale : nullptr, nullptr);
  n = phi;
  e = lambda0_ + deltaLambda;
  return true;
}

}  // namespace zel_cs::geomath
