#include "geomath/proj/methods/utm_proj.h"

#include <cmath>

#include "geomath/proj/methods/math/multiple_angles.h"

// Symbols of Stem 1989:
//   λ0 lambda0_   k0 k0_   S0 forwardOrigin_, inverseOrigin_   r series_.r
//   L  = Δλ·cos φ   R = scaled prime-vertical radius   t = tan φ   η² = e′²·cos²φ   Q = ΔE/R
namespace zel_cs::geomath {

std::span<const ParamRow<TUTMProj>> TUTMProj::Params() {
  static constexpr ParamRow<TUTMProj> rows[] = {
      {&TUTMProj::lambda0_, ParamKind::angle},
      {&TUTMProj::k0_, ParamKind::scale, &TUTMProj::Prepare},
      {&TUTMProj::phi0_, ParamKind::angle, &TUTMProj::Prepare},
      {&TUTMProj::fEast_, ParamKind::length},
      {&TUTMProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TUTMProj::TUTMProj() : TUTMProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0) {}

TUTMProj::TUTMProj(double a, double invF, double cm, double scale, double lat0, double fEast,
                   double fNorth)
    : TGeoProj(ProjTypeTM, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth),
      series_(ell_) {
  TUTMProj::Prepare();
}

void TUTMProj::Scale(double value) {
  k0_ = value;
  Prepare();
}

void TUTMProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

double TUTMProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TUTMProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TUTMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  b0 = 0;
  l0 = lambda0_;
  db = kHalfPi;
  dl = kPi / 20;
  return true;
}

void TUTMProj::Prepare() {
  series_ = MeridianSeries(ell_);
  rK0_ = k0_ * series_.r;
  aK0_ = k0_ * ell_.a;
  forwardOrigin_ = ForwardArc(phi0_, std::sin(phi0_), std::cos(phi0_));
  inverseOrigin_ = rK0_ * series_.arc(phi0_);
}

// Kept: the forward arc ends at sin 6φ, for the point and for the origin.
double TUTMProj::ForwardArc(double phi, double sinPhi, double cosPhi) const {
  const double u[] = {series_.u2, series_.u4, series_.u6};
  const double sin2 = 2 * sinPhi * cosPhi, cos2 = 1 - 2 * sinPhi * sinPhi;
  return rK0_ * (phi + ClenshawSin(u, sin2, cos2));
}

// Convergence, its sign taken from the longitude difference before it is folded, and point scale.
PointFactors TUTMProj::FactorsAt(double phi, double lambda, double sinPhi, double cosPhi,
                                 double L) const {
  const double t = sinPhi / cosPhi, t2 = t * t;
  const double eta2 = ell_.ep2 * (cosPhi * cosPhi), eta4 = eta2 * eta2;
  const double L2 = L * L;
  const double size =
      std::abs(t * L * (1 + L2 * ((1 + 3 * eta2 + 2 * eta4) / 3 + L2 * ((2 - t2) / 15))));
  const bool east = lambda - lambda0_ >= 0, south = phi < 0;
  const double k =
      k0_ * (1 + (1 + eta2) * L2 / 2 * (1 + L2 * (5 - 4 * t2 + eta2 * (9 - 24 * t2)) / 12));
  return {.scale = k, .convergence = east != south ? size : -size};
}

bool TUTMProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b, lambda = l;
  const double s = std::sin(phi), c = std::cos(phi);
  const double t = s / c, t2 = t * t, t4 = t2 * t2, t6 = t4 * t2;
  const double eta2 = ell_.ep2 * (c * c);
  const double L = SetValue(lambda - lambda0_, 1) * c, L2 = L * L;
  const double R = aK0_ / std::sqrt(1 - ell_.e2 * (s * s));

  const double A4 = (5 - t2 + eta2 * (9 + 4 * eta2)) / 12;
  const double A6 = (61 - 58 * t2 + t4 + eta2 * (270 - 330 * t2)) / 360;
  const double A3 = (1 - t2 + eta2) / 6;
  const double A5 = (5 - 18 * t2 + t4 + eta2 * (14 - 58 * t2)) / 120;
  const double A7 = (61 - 479 * t2 + 179 * t4 - t6) / 5040;

  if (factors) *factors = FactorsAt(phi, lambda, s, c, L);
  b = ForwardArc(phi, s, c) - forwardOrigin_ + fNorth_ + R * t * L2 / 2 * (1 + L2 * (A4 + L2 * A6));
  l = fEast_ + R * L * (1 + L2 * (A3 + L2 * (A5 + L2 * A7)));
  return true;
}

bool TUTMProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  const double omega = (n - fNorth_ + inverseOrigin_) / rK0_;
  const double phiF = series_.footpoint(omega);

  const double s = std::sin(phiF), c = std::cos(phiF);
  const double t = s / c, t2 = t * t, t4 = t2 * t2, t6 = t4 * t2;
  const double eta2 = ell_.ep2 * (c * c), eta4 = eta2 * eta2;
  const double R = aK0_ / std::sqrt(1 - ell_.e2 * (s * s));
  const double Q = (e - fEast_) / R, Q2 = Q * Q;

  const double B2 = t * (1 + eta2) / 2;
  const double B4 = (5 + 3 * t2 + eta2 - 4 * eta4 - 9 * t2 * eta2) / 12;
  const double B6 = (61 + 90 * t2 + 45 * t4 + eta2 * (46 - 252 * t2 - 60 * t4)) / 360;
  const double B3 = (1 + 2 * t2 + eta2) / 6;
  const double B5 = (5 + 28 * t2 + 24 * t4 + eta2 * (6 + 8 * t2)) / 120;
  const double B7 = (61 + 662 * t2 + 1320 * t4 + 720 * t6) / 5040;

  const double phi = phiF - B2 * Q2 * (1 - Q2 * (B4 - Q2 * B6));
  const double lambda = lambda0_ + Q / c * (1 - Q2 * (B3 - Q2 * (B5 - Q2 * B7)));
  if (factors) {
    const double cosPhi = std::cos(phi), L = SetValue(lambda - lambda0_, 1) * cosPhi;
    *factors = FactorsAt(phi, lambda, std::sin(phi), cosPhi, L);
  }
  n = phi;
  e = lambda;
  return true;
}

}  // namespace zel_cs::geomath
