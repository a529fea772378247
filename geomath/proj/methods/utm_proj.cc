#include "geomath/proj/methods/utm_proj.h"

#include <cmath>

#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/multiple_angles.h"
#include "geomath/proj/methods/math/tm_longitude_series.h"

// Symbols of Stem 1989:
//   λ0 lambda0_   k0 k0_   S0 forwardOrigin_, inverseOrigin_   r series_.r
//   L  = Δλ·cos φ   R = scaled prime-vertical radius   t = tan φ   η² = e′²·cos²φ   Q = ΔE/R
namespace zel_cs::geomath {
namespace {

constexpr double kEta2T4 = 60;  // Kept: Stem 1989 has 90; see TmInverseSeries

}  // namespace

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
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
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
PointFactors TUTMProj::FactorsAt(double phi, double lambda, const TmLatitude& at, double L) const {
  const double size = std::abs(TmConvergence(at, L));
  const bool east = lambda - lambda0_ >= 0, south = phi < 0;
  return {.scale = k0_ * TmScale(at, L), .convergence = east != south ? size : -size};
}

bool TUTMProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b, lambda = l;
  const double s = std::sin(phi), c = std::cos(phi);
  const TmLatitude at(s, c, ell_.ep2);
  const double L = SetValue(lambda - lambda0_, 1) * c;
  const double R = aK0_ / std::sqrt(1 - ell_.e2 * (s * s));

  if (factors) *factors = FactorsAt(phi, lambda, at, L);
  const TmOffset offset = TmForwardSeries(at, L);
  b = ForwardArc(phi, s, c) - forwardOrigin_ + fNorth_ + R * offset.north;
  l = fEast_ + R * offset.east;
  return true;
}

bool TUTMProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  const double omega = (n - fNorth_ + inverseOrigin_) / rK0_;
  const double phiF = series_.footpoint(omega);

  const double s = std::sin(phiF), c = std::cos(phiF);
  const double R = aK0_ / std::sqrt(1 - ell_.e2 * (s * s));
  const TmFootpointStep step =
      TmInverseSeries(TmLatitude(s, c, ell_.ep2), (e - fEast_) / R, kEta2T4);

  const double phi = phiF + step.latitude;
  const double lambda = lambda0_ + step.longitude / c;
  if (factors) {
    const double sinPhi = std::sin(phi), cosPhi = std::cos(phi);
    *factors = FactorsAt(phi, lambda, TmLatitude(sinPhi, cosPhi, ell_.ep2),
                         SetValue(lambda - lambda0_, 1) * cosPhi);
  }
  n = phi;
  e = lambda;
  return true;
}

}  // namespace zel_cs::geomath
