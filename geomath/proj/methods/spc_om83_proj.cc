#include "geomath/proj/methods/spc_om83_proj.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TSPC_OM83Proj>> TSPC_OM83Proj::Params() {
  using P = TSPC_OM83Proj;
  static constexpr ParamRow<P> rows[] = {
      {&P::azimuth_, ParamKind::angle, &P::Prepare},
      {&P::k0_, ParamKind::scale, &P::Prepare},
      {&P::lambdaC_, ParamKind::angle, &P::Prepare},
      {&P::phiC_, ParamKind::angle, &P::Prepare},
      {&P::fEast_, ParamKind::length, &P::Prepare},
      {&P::fNorth_, ParamKind::length, &P::Prepare},
      {&P::zone_, ParamKind::number},
  };
  return rows;
}

TSPC_OM83Proj::TSPC_OM83Proj() : TSPC_OM83Proj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, 0, 0) {}

TSPC_OM83Proj::TSPC_OM83Proj(double a, double invF, double azimuth, double scale, double lon0,
                             double lat0, double fEast, double fNorth, int zone)
    : HotineProj(ProjTypeSPC_OM83, Params().size(), a, invF, azimuth, scale, lon0, lat0, fEast,
                 fNorth),
      zone_(zone) {}

double TSPC_OM83Proj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TSPC_OM83Proj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

}  // namespace zel_cs::geomath
