#include "geomath/proj/methods/mon_spher.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/latitude.h"

// Equation numbers are Snyder 1987, transverse Mercator of the sphere, with spherical latitude χ
// and longitude Λ = m·Δλ for his φ and λ; m is sphere_.alpha. x and y count from the origin before
// the axes are turned by θ theta_.
namespace zel_cs::geomath {

std::span<const ParamRow<TMonSpher>> TMonSpher::Params() {
  static constexpr ParamRow<TMonSpher> rows[] = {
      {&TMonSpher::phi0_, ParamKind::angle, &TMonSpher::Prepare},
      {&TMonSpher::lambda0_, ParamKind::angle},
      {&TMonSpher::phiN_, ParamKind::angle, &TMonSpher::Prepare},
      {&TMonSpher::k1_, ParamKind::number, &TMonSpher::Prepare},
      {&TMonSpher::k0_, ParamKind::scale, &TMonSpher::Prepare},
      {&TMonSpher::fEast_, ParamKind::length},
      {&TMonSpher::fNorth_, ParamKind::length},
      {&TMonSpher::theta_, ParamKind::angle, &TMonSpher::Prepare},
  };
  return rows;
}

TMonSpher::TMonSpher() : TMonSpher(kWgs84A, kWgs84InvF, 0, 0, 0, 1.0, 1.0, 0, 0, 0) {}

TMonSpher::TMonSpher(double a, double invF, double lat0, double lon0, double latNormal, double k1,
                     double scale, double fEast, double fNorth, double axisAzimuth)
    : TGeoProj(ProjTypeMonSpher, static_cast<int>(Params().size()), a, invF, true),
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

void TMonSpher::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TMonSpher::LatNormal(double value) {
  phiN_ = value;
  Prepare();
}

void TMonSpher::K1(double value) {
  k1_ = value;
  Prepare();
}

void TMonSpher::Scale(double value) {
  k0_ = value;
  Prepare();
}

void TMonSpher::AxisAzimuth(double value) {
  theta_ = value;
  Prepare();
}

double TMonSpher::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TMonSpher::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TMonSpher::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TMonSpher::Prepare() {
  sphere_ = ConformalSphere(ell_, phiN_);
  R_ = k1_ * k0_ * sphere_.R;
  chi0_ = sphere_.Latitude(phi0_);
  sinTheta_ = std::sin(theta_);
  cosTheta_ = std::cos(theta_);
}

// Scale of the sphere on the ellipsoid, times that of its transverse Mercator (8-4): `cosSide` is
// the cosine of the arc that the point lies to the side of the central meridian.
double TMonSpher::ScaleAt(double sinPhi, double cosPhi, double cosChi, double cosSide) const {
  return R_ * sphere_.alpha * cosChi / (ell_.a * ParallelRadius(sinPhi, cosPhi, ell_.e2) * cosSide);
}

bool TMonSpher::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  const double sinPhi = std::sin(b), cosPhi = std::cos(b);
  const double Lambda = sphere_.alpha * SetValue(l - lambda0_, 1);
  const auto [sinChi, cosChi] = sphere_.Latitude(sinPhi, cosPhi);
  const double B = cosChi * std::sin(Lambda);  // 8-5
  if (!(std::abs(B) < 1)) return false;

  const double cosLambda = std::cos(Lambda);
  const double x = R_ * std::atanh(B);                                     // 8-1
  const double y = R_ * (std::atan2(sinChi, cosChi * cosLambda) - chi0_);  // 8-3
  if (factors)
    factors->scale = ScaleAt(sinPhi, cosPhi, cosChi, std::hypot(sinChi, cosChi * cosLambda));
  b = fNorth_ + y * cosTheta_ - x * sinTheta_;
  l = fEast_ + y * sinTheta_ + x * cosTheta_;
  return true;
}

bool TMonSpher::InversePoint(double& n, double& e, PointFactors* factors) const {
  const double dN = n - fNorth_, dE = e - fEast_;
  const double x = dE * cosTheta_ - dN * sinTheta_;
  const double y = dN * cosTheta_ + dE * sinTheta_;
  const double D = y / R_ + chi0_;  // 8-8
  const double sinhX = std::sinh(x / R_), cosD = std::cos(D);

  const double coshX = std::hypot(1, sinhX);
  const SinCos chi = {std::sin(D) / coshX, std::hypot(sinhX, cosD) / coshX};  // 8-6
  const double Lambda = std::atan2(sinhX, cosD);                              // 8-7
  const double phi = sphere_.Geodetic(chi);
  if (factors) factors->scale = ScaleAt(std::sin(phi), std::cos(phi), chi.cos, 1 / coshX);
  n = phi;
  e = lambda0_ + Lambda / sphere_.alpha;
  return true;
}

}  // namespace zel_cs::geomath
