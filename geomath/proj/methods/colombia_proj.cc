#include "geomath/proj/methods/colombia_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/latitude.h"

// Symbols of EPSG method 1052, its plane height being 0: ρ0 rho0_   B B_
namespace zel_cs::geomath {
namespace {

constexpr double kHalfExtent = kPi / 360;  // half a degree, 55 km

}  // namespace

std::span<const ParamRow<TColombiaProj>> TColombiaProj::Params() {
  static constexpr ParamRow<TColombiaProj> rows[] = {
      {&TColombiaProj::phi0_, ParamKind::angle, &TColombiaProj::Prepare},
      {&TColombiaProj::lambda0_, ParamKind::angle},
      {&TColombiaProj::fEast_, ParamKind::length},
      {&TColombiaProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TColombiaProj::TColombiaProj() : TColombiaProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TColombiaProj::TColombiaProj(double a, double invF, double lat0, double lon0, double fEast,
                             double fNorth)
    : TGeoProj(ProjTypeColombia, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TColombiaProj::Prepare();
}

void TColombiaProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

double TColombiaProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TColombiaProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TColombiaProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  b0 = phi0_;
  l0 = lambda0_;
  db = dl = kHalfExtent;
  return true;
}

void TColombiaProj::Prepare() {
  const double sin0 = std::sin(phi0_);
  rho0_ = MeridianRadius(sin0, ell_);
  B_ = std::tan(phi0_) / (2 * rho0_ * PrimeVerticalRadius(sin0, ell_));
}

bool TColombiaProj::ForwardPoint(double& b, double& l, PointFactors*) const {
  const double phi = b;
  const double parallel = ell_.a * ParallelRadius(std::sin(phi), std::cos(phi), ell_.e2);
  const double x = parallel * SetValue(l - lambda0_, 1);
  b = fNorth_ + rho0_ * ((phi - phi0_) + B_ * (x * x));
  l = fEast_ + x;
  return true;
}

bool TColombiaProj::InversePoint(double& n, double& e, PointFactors*) const {
  const double x = e - fEast_;
  const double phi = phi0_ + (n - fNorth_) / rho0_ - B_ * (x * x);
  const double parallel = ell_.a * ParallelRadius(std::sin(phi), std::cos(phi), ell_.e2);
  n = phi;
  e = lambda0_ + x / parallel;
  return true;
}

}  // namespace zel_cs::geomath
