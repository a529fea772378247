#include "geomath/proj/methods/swiss_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"

// Symbols of the source, there and here:
//   b l   spherical latitude and longitude      b̄ l̄   bBar lBar   in the oblique system
//   R α K b0   sphere_.R, .alpha, .K, .chi0
// Points of the sphere are kept as x, y, z: x towards the central meridian's equator, z the pole.
namespace zel_cs::geomath {
namespace {

constexpr double kCylinderEnd = 1e-15;  // of 1 − |sin b̄|

}  // namespace

std::span<const ParamRow<TSwissProj>> TSwissProj::Params() {
  static constexpr ParamRow<TSwissProj> rows[] = {
      {&TSwissProj::lambda0_, ParamKind::angle},
      {&TSwissProj::phi0_, ParamKind::angle, &TSwissProj::Prepare},
      {&TSwissProj::fEast_, ParamKind::length},
      {&TSwissProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TSwissProj::TSwissProj() : TSwissProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TSwissProj::TSwissProj(double a, double invF, double lon0, double lat0, double fEast, double fNorth)
    : TGeoProj(ProjTypeSwiss, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TSwissProj::Prepare();
}

void TSwissProj::B0(double value) {
  phi0_ = value;
  Prepare();
}

double TSwissProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TSwissProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TSwissProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TSwissProj::Prepare() {
  sphere_ = ConformalSphere(ell_, phi0_);
  sinB0_ = std::sin(sphere_.chi0);
  cosB0_ = std::cos(sphere_.chi0);
}

double TSwissProj::PointScale(double phi, double cosB, double cosBBar) const {
  const double m = ParallelRadius(std::sin(phi), std::cos(phi), ell_.e2);
  return sphere_.alpha * sphere_.R * cosB / (ell_.a * m * cosBBar);
}

bool TSwissProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b;
  const auto [sinB, cosB] = sphere_.Latitude(std::sin(phi), std::cos(phi));
  const double lSphere = sphere_.alpha * SetValue(l - lambda0_, 1);

  const double meridian = cosB * std::cos(lSphere);
  const double x = sinB0_ * sinB + cosB0_ * meridian, y = cosB * std::sin(lSphere);
  const double sinBBar = cosB0_ * sinB - sinB0_ * meridian;
  if (1 - std::abs(sinBBar) < kCylinderEnd) return false;
  const double cosBBar = std::sqrt(x * x + y * y);

  if (factors) factors->scale = PointScale(phi, cosB, cosBBar);
  b = fNorth_ + sphere_.R * std::asinh(sinBBar / cosBBar);  // artanh(sin b̄), kept near 90°
  l = fEast_ + sphere_.R * std::atan2(y, x);
  return true;
}

bool TSwissProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  const double lBar = (e - fEast_) / sphere_.R, psiBar = (n - fNorth_) / sphere_.R;
  const double cosBBar = 1 / std::cosh(psiBar), sinBBar = std::tanh(psiBar);

  const double meridian = cosBBar * std::cos(lBar);
  const double x = cosB0_ * meridian - sinB0_ * sinBBar, y = cosBBar * std::sin(lBar);
  const double sinB = cosB0_ * sinBBar + sinB0_ * meridian, cosB = std::sqrt(x * x + y * y);

  const double phi = sphere_.Geodetic({sinB, cosB});
  if (factors) factors->scale = PointScale(phi, cosB, cosBBar);
  n = phi;
  e = lambda0_ + std::atan2(y, x) / sphere_.alpha;
  return true;
}

}  // namespace zel_cs::geomath
