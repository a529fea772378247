#include "geomath/proj/methods/o_mercator_proj.h"

#include <cmath>

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
    : HotineProj(ProjTypeOMercator, Params().size(), a, invF, azimuth, scale, lon0, lat0, fEast,
                 fNorth) {}

double TOMercatorProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TOMercatorProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TOMercatorProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const Hotine& hotine = grid_.Projection();
  if (l != hotine.lambda0) return grid_.ForwardPoint(b, l, factors);

  const Hotine::Projected at = hotine.Project<simd::Libm>(b, l);
  if (factors) factors->scale = hotine.CylinderScale(at.sinPhi, at.cosPhi);
  grid_.ToGrid({0, at.skew.v}, b, l);
  return true;
}

}  // namespace zel_cs::geomath
