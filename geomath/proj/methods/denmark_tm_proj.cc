#include "geomath/proj/methods/denmark_tm_proj.h"

#include <algorithm>
#include <cmath>

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kSmallFlattening = 0.0025;  // |n| up to which every sum is below 0.03

}  // namespace

std::span<const ParamRow<TDenmarkTMProj>> TDenmarkTMProj::Params() {
  static constexpr ParamRow<TDenmarkTMProj> rows[] = {
      {&TDenmarkTMProj::lambda0_, ParamKind::angle, &TDenmarkTMProj::Prepare},
      {&TDenmarkTMProj::k0_, ParamKind::scale, &TDenmarkTMProj::Prepare},
      {&TDenmarkTMProj::phi0_, ParamKind::angle, &TDenmarkTMProj::Prepare},
      {&TDenmarkTMProj::fEast_, ParamKind::length, &TDenmarkTMProj::Prepare},
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

void TDenmarkTMProj::Set(double& field, double value) {
  field = value;
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
  DenmarkTmFormulas& f = formulas_;
  f.lambda0 = lambda0_;
  f.fEast = fEast_;
  f.nearSphere = std::abs(n) <= kSmallFlattening;
  std::ranges::copy(cbg, f.cbg);
  std::ranges::copy(cgb, f.cgb);
  std::ranges::copy(gtu, f.gtu);
  std::ranges::copy(utg, f.utg);

  f.Qn = k0_ * ell_.a / (1 + n) * (1 + n2 / 4 + n4 / 64);
  const double Z = phi0_ + f.SumSin2(f.cbg, std::sin(phi0_), std::cos(phi0_));
  f.Zb = fNorth_ - f.Qn * (Z + f.SumSin2(f.gtu, std::sin(Z), std::cos(Z)));
}

bool TDenmarkTMProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  double n = b, e = l;
  if (!ForwardOne(formulas_, n, e)) return false;
  b = n;
  l = e;
  return true;
}

bool TDenmarkTMProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  if (std::abs((e - fEast_) / formulas_.Qn) > DenmarkTmFormulas::kInnerLimit) return false;
  InverseOne(formulas_, n, e);
  return true;
}

bool TDenmarkTMProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(formulas_, b, l, derivatives);
}

void TDenmarkTMProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(formulas_, columns, count);
}

void TDenmarkTMProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(formulas_, *this, b, l, count);
}

void TDenmarkTMProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(formulas_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
