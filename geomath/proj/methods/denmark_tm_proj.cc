#include "geomath/proj/methods/denmark_tm_proj.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/multiple_angles.h"

// Symbols of Poder and Engsager 1998:
//   Z  Gaussian latitude   Cn, Ce  northing and easting over Qn: on the Gaussian sphere's transverse
//   Mercator and, with dCn, dCe added, on the ellipsoid's   L  longitude difference
// On the sphere sinh Ce is the tangent of η, the arc from the central meridian.
namespace zel_cs::geomath {
namespace {

constexpr double kOuterLimit = 2.623395162778;   // of |Ce|, about 150° at the equator
constexpr double kInnerLimit = 0.8349968168864;  // of |Ce|, 43° at the equator

// Good to 1e-16 of one radian, which is what the sums and the results need; |imag| stays below 1.
ComplexAngle AngleOf(double real, double imag) {
  const double grow = std::exp(imag), decay = 1 / grow;
  return {std::sin(real), std::cos(real), (grow - decay) / 2, (grow + decay) / 2};
}

ComplexAngle Twice(const ComplexAngle& z) {
  return {2 * z.sin * z.cos, (z.cos - z.sin) * (z.cos + z.sin), 2 * z.sinh * z.cosh,
          1 + 2 * (z.sinh * z.sinh)};
}

double SumSin2(const double (&c)[4], double sinX, double cosX) {
  return ClenshawSin(c, 2 * sinX * cosX, (cosX - sinX) * (cosX + sinX));
}

}  // namespace

std::span<const ParamRow<TDenmarkTMProj>> TDenmarkTMProj::Params() {
  static constexpr ParamRow<TDenmarkTMProj> rows[] = {
      {&TDenmarkTMProj::lambda0_, ParamKind::angle},
      {&TDenmarkTMProj::k0_, ParamKind::scale, &TDenmarkTMProj::Prepare},
      {&TDenmarkTMProj::phi0_, ParamKind::angle, &TDenmarkTMProj::Prepare},
      {&TDenmarkTMProj::fEast_, ParamKind::length},
      {&TDenmarkTMProj::fNorth_, ParamKind::length, &TDenmarkTMProj::Prepare},
  };
  return rows;
}

TDenmarkTMProj::TDenmarkTMProj() : TDenmarkTMProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0) {}

TDenmarkTMProj::TDenmarkTMProj(double a, double invF, double cm, double scale, double lat0,
                               double fEast, double fNorth)
    : TGeoProj(ProjTypeDenmarkTM, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  Init();
}

void TDenmarkTMProj::Scale(double value) {
  k0_ = value;
  Prepare();
}

void TDenmarkTMProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TDenmarkTMProj::FNorth(double value) {
  fNorth_ = value;
  Prepare();
}

double TDenmarkTMProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TDenmarkTMProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TDenmarkTMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TDenmarkTMProj::SetNEAxes(const wchar_t* axes) { TGeoProj::SetNEAxes(axes); }

void TDenmarkTMProj::Prepare() { Init(); }

void TDenmarkTMProj::Init() {
  const double n = ell_.n, n2 = n * n, n3 = n2 * n, n4 = n3 * n;
  // clang-format off
  const double cbg[] = {
      -2 * n + 2.0 / 3 * n2 + 4.0 / 3 * n3 - 82.0 / 45 * n4,
      5.0 / 3 * n2 - 16.0 / 15 * n3 - 13.0 / 9 * n4,
      -26.0 / 15 * n3 + 34.0 / 21 * n4,
      1237.0 / 630 * n4};
  const double cgb[] = {
      2 * n - 2.0 / 3 * n2 - 2 * n3 + 116.0 / 45 * n4,
      7.0 / 3 * n2 - 8.0 / 5 * n3 - 227.0 / 45 * n4,
      56.0 / 15 * n3 - 136.0 / 35 * n4,
      4279.0 / 630 * n4};
  const double gtu[] = {
      1.0 / 2 * n - 2.0 / 3 * n2 + 5.0 / 16 * n3 + 41.0 / 180 * n4,
      13.0 / 48 * n2 - 3.0 / 5 * n3 + 557.0 / 1440 * n4,
      61.0 / 240 * n3 - 103.0 / 140 * n4,
      49561.0 / 161280 * n4};
  const double utg[] = {
      -1.0 / 2 * n + 2.0 / 3 * n2 - 37.0 / 96 * n3 + 1.0 / 360 * n4,
      -1.0 / 48 * n2 - 1.0 / 15 * n3 + 437.0 / 1440 * n4,
      -17.0 / 480 * n3 + 37.0 / 840 * n4,
      -4397.0 / 161280 * n4};
  // clang-format on
  std::ranges::copy(cbg, cbg_);
  std::ranges::copy(cgb, cgb_);
  std::ranges::copy(gtu, gtu_);
  std::ranges::copy(utg, utg_);

  Qn_ = k0_ * ell_.a / (1 + n) * (1 + n2 / 4 + n4 / 64);
  const double Z = phi0_ + SumSin2(cbg_, std::sin(phi0_), std::cos(phi0_));
  Zb_ = fNorth_ - Qn_ * (Z + SumSin2(gtu_, std::sin(Z), std::cos(Z)));
}

bool TDenmarkTMProj::ForwardPoint(double& b, double& l, PointFactors*) const {
  const double phi = b, L = SetValue(l - lambda0_, 1);
  const double Z = phi + SumSin2(cbg_, std::sin(phi), std::cos(phi));
  const double sinZ = std::sin(Z), cosZ = std::cos(Z);
  const double cosZCosL = cosZ * std::cos(L);

  const double cosEta = std::sqrt(sinZ * sinZ + cosZCosL * cosZCosL);
  const double sinCn = sinZ / cosEta, cosCn = cosZCosL / cosEta;
  const double sinhCe = cosZ * std::sin(L) / cosEta, coshCe = std::sqrt(1 + sinhCe * sinhCe);
  const double Cn = std::atan2(sinZ, cosZCosL);
  const double Ce = std::copysign(std::log(std::abs(sinhCe) + coshCe), sinhCe);

  const ComplexSum d = ClenshawSin(gtu_, Twice({sinCn, cosCn, sinhCe, coshCe}));
  const double e = Ce + d.imag;
  if (std::abs(e) > kOuterLimit) return false;  // Kept: the inner limit always decides
  if (std::abs(e) > kInnerLimit) return false;
  b = Zb_ + Qn_ * (Cn + d.real);
  l = fEast_ + Qn_ * e;
  return true;
}

bool TDenmarkTMProj::InversePoint(double& n, double& e, PointFactors*) const {
  const double Cn0 = (n - Zb_) / Qn_, Ce0 = (e - fEast_) / Qn_;
  if (std::abs(Ce0) > kInnerLimit) return false;

  const ComplexSum d = ClenshawSin(utg_, Twice(AngleOf(Cn0, Ce0)));
  const auto [sinCn, cosCn, sinhCe, coshCe] = AngleOf(Cn0 + d.real, Ce0 + d.imag);
  const double side = std::sqrt(sinhCe * sinhCe + cosCn * cosCn);
  const double Z = std::atan2(sinCn, side);
  n = Z + SumSin2(cgb_, sinCn / coshCe, side / coshCe);
  e = lambda0_ + std::atan2(sinhCe, cosCn);
  return true;
}

}  // namespace zel_cs::geomath
