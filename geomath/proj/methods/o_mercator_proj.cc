#include "geomath/proj/methods/o_mercator_proj.h"

#include <cmath>

#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TOMercatorProj>> TOMercatorProj::Params() {
  using P = TOMercatorProj;
  static constexpr ParamRow<P> rows[] = {
      {&P::azimuth_, ParamKind::number, &P::Prepare},  // Kept: radians under every unit code
      {&P::k0_, ParamKind::scale, &P::Prepare},       {&P::lambdaC_, ParamKind::angle, &P::Prepare},
      {&P::phiC_, ParamKind::angle, &P::Prepare},     {&P::fEast_, ParamKind::length, &P::Prepare},
      {&P::fNorth_, ParamKind::length, &P::Prepare},
  };
  return rows;
}

TOMercatorProj::TOMercatorProj() : TOMercatorProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, 0) {}

TOMercatorProj::TOMercatorProj(double a, double invF, double azimuth, double scale, double lon0,
                               double lat0, double fEast, double fNorth)
    : TGeoProj(ProjTypeOMercator, static_cast<int>(Params().size()), a, invF, true),
      azimuth_(azimuth),
      k0_(scale),
      lambdaC_(lon0),
      phiC_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TOMercatorProj::Prepare();
}

void TOMercatorProj::Set(double TOMercatorProj::*field, double value) {
  this->*field = value;
  Prepare();
}

void TOMercatorProj::AxisAzimuth(double value) { Set(&TOMercatorProj::azimuth_, value); }
void TOMercatorProj::Scale(double value) { Set(&TOMercatorProj::k0_, value); }
void TOMercatorProj::Lon0(double value) { Set(&TOMercatorProj::lambdaC_, value); }
void TOMercatorProj::Lat0(double value) { Set(&TOMercatorProj::phiC_, value); }
void TOMercatorProj::FEast(double value) { Set(&TOMercatorProj::fEast_, value); }
void TOMercatorProj::FNorth(double value) { Set(&TOMercatorProj::fNorth_, value); }

double TOMercatorProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TOMercatorProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TOMercatorProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phiC_, lambdaC_, b0, l0, db, dl);
}

void TOMercatorProj::Prepare() {
  grid_ = HotineGrid(Hotine(ell_, {azimuth_, k0_, phiC_, lambdaC_}),
                     {std::sin(azimuth_), std::cos(azimuth_), fNorth_, fEast_});
}

bool TOMercatorProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  const Hotine& hotine = grid_.Projection();
  if (l != hotine.lambda0) return grid_.Forward(b, l, factors);

  const double phi = b;
  if (factors) factors->scale = hotine.CylinderScale(std::sin(phi), std::cos(phi));
  grid_.ToGrid({0, hotine.Forward(phi, l).v}, b, l);
  return true;
}

bool TOMercatorProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  return grid_.Inverse(n, e, factors);
}

}  // namespace zel_cs::geomath
