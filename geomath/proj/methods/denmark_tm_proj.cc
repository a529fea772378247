#include "geomath/proj/methods/denmark_tm_proj.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/proj/methods/formulas/denmark_tm_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();

}  // namespace

constexpr ParamRow TDenmarkTMProj::kParams[] = {
    {"Central Meridian", Quantity::longitude, &TDenmarkTMProj::lambda0_},
    {"Scale", Quantity::scale, &TDenmarkTMProj::k0_},
    {"Lat0", Quantity::latitude, &TDenmarkTMProj::phi0_},
    {"East0", Quantity::easting, &TDenmarkTMProj::fEast_},
    {"North0", Quantity::northing, &TDenmarkTMProj::fNorth_},
};

std::span<const ParamRow> TDenmarkTMProj::Params() const { return kParams; }

TDenmarkTMProj::TDenmarkTMProj() : TDenmarkTMProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0) {}

TDenmarkTMProj::TDenmarkTMProj(double a, double invF, double cm, double scale, double lat0,
                               double fEast, double fNorth)
    : TGeoProj(ProjTypeDenmarkTM, kParams, a, invF),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  Init();
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
  DenmarkTmFormulas& f = *formulas_;
  f.lambda0 = lambda0_;
  f.fEast = fEast_;
  f.nearSphere = ConformalLatitude(ell_).ServesColumns();  // every sum is then below 0.03
  std::ranges::copy(cbg, f.cbg);
  std::ranges::copy(cgb, f.cgb);
  std::ranges::copy(gtu, f.gtu);
  std::ranges::copy(utg, f.utg);

  f.Qn = k0_ * ell_.a / (1 + n) * (1 + n2 / 4 + n4 / 64);
  const double Z = phi0_ + f.SumSin2(f.cbg, Sin(phi0_), Cos(phi0_));
  f.Zb = fNorth_ - f.Qn * (Z + f.SumSin2(f.gtu, Sin(Z), Cos(Z)));
}

bool TDenmarkTMProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  double n = b, e = l;
  if (!ForwardOne(*formulas_, n, e)) return false;
  b = n;
  l = e;
  return true;
}

bool TDenmarkTMProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  if (std::abs((e - fEast_) / formulas_->Qn) > DenmarkTmFormulas::kInnerLimit) return false;
  InverseOne(*formulas_, n, e);
  return true;
}

void TDenmarkTMProj::ProjectBlock(double* b, double* l, std::size_t count) const {
  RunKernel(ForwardOf<DenmarkTmFormulas>{*formulas_}, {b, l}, count, [this](double(&point)[2]) {
    if (!TDenmarkTMProj::ProjectPoint(point[0], point[1], nullptr)) point[0] = kNowhere;
  });
}

void TDenmarkTMProj::UnprojectBlock(double* n, double* e, std::size_t count) const {
  RunKernel(InverseOf<DenmarkTmFormulas>{*formulas_}, {n, e}, count, [this](double(&point)[2]) {
    if (!TDenmarkTMProj::UnprojectPoint(point[0], point[1], nullptr)) point[0] = kNowhere;
  });
}

FormulaView TDenmarkTMProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
