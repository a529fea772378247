#include "geomath/proj/methods/minnesota_om_proj.h"

#include <cmath>

#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/county_ellipsoid.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TMinnesota_OMProj>> TMinnesota_OMProj::Params() {
  using P = TMinnesota_OMProj;
  static constexpr ParamRow<P> rows[] = {
      {&P::lambdaC_, ParamKind::angle, &P::Prepare},
      {&P::phiC_, ParamKind::angle, &P::Prepare},
      {&P::northStdP_, ParamKind::angle},
      {&P::southStdP_, ParamKind::angle},
      {&P::k0_, ParamKind::scale, &P::Prepare},
      {&P::fNorth_, ParamKind::length, &P::Prepare},
      {&P::fEast_, ParamKind::length, &P::Prepare},
      {&P::desElA_, ParamKind::length, &P::Prepare},
      {&P::desElB_, ParamKind::length, &P::Prepare},
      {&P::elevationShift_, ParamKind::length, &P::Prepare},
      {&P::azimuth_, ParamKind::angle, &P::Prepare},
      {&P::geoidHeight_, ParamKind::length, &P::Prepare},
  };
  return rows;
}

TMinnesota_OMProj::TMinnesota_OMProj()
    : TMinnesota_OMProj(kWgs84A, kWgs84InvF, 0, 0, 0, 1.0, 0, 0, 0, kWgs84A, kWgs84A, 0, 0, 0) {}

TMinnesota_OMProj::TMinnesota_OMProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : TGeoProj(ProjTypeMinnesota_OM, static_cast<int>(Params().size()), a, invF, true),
      lambdaC_(lonOrigin),
      phiC_(latOrigin),
      northStdP_(northStdP),
      southStdP_(southStdP),
      k0_(scale),
      fNorth_(fNorth),
      fEast_(fEast),
      desElA_(desElA),
      desElB_(desElB),
      elevationShift_(elevationShift),
      azimuth_(obliqueAngle),
      geoidHeight_(geoidHeight) {
  TMinnesota_OMProj::Prepare();
}

void TMinnesota_OMProj::Set(double& field, double value) {
  field = value;
  Prepare();
}

double TMinnesota_OMProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TMinnesota_OMProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TMinnesota_OMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phiC_, lambdaC_, b0, l0, db, dl);
}

void TMinnesota_OMProj::Prepare() {
  const Ellipsoid county = CountyEllipsoid(ell_, desElA_, desElB_, elevationShift_, geoidHeight_);
  const Hotine hotine(county, {azimuth_, CountyScale(k0_), phiC_, lambdaC_});
  grid_ = HotineGrid(hotine, {std::sin(azimuth_), std::cos(azimuth_), fNorth_, fEast_});
}

bool TMinnesota_OMProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  return grid_.Forward(b, l, factors);
}

bool TMinnesota_OMProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  return grid_.Inverse(n, e, factors);
}

}  // namespace zel_cs::geomath
