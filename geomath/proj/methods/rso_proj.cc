#include "geomath/proj/methods/rso_proj.h"

namespace zel_cs::geomath {
namespace {

// Malayan rectified skew orthomorphic grid; the false easting is 40000 chains.
constexpr double kMalayanAzimuth = -36.9742095 * kRadPerDeg;  // 323°01′32.8458″
constexpr double kMalayanScale = 0.99984;
constexpr double kMalayanLon0 = 102.25 * kRadPerDeg;
constexpr double kMalayanLat0 = 4 * kRadPerDeg;
constexpr double kMalayanFalseEasting = 804671.2996;  // metres

}  // namespace

std::span<const ParamRow<TRSOProj>> TRSOProj::Params() {
  using P = TRSOProj;
  static constexpr ParamRow<P> rows[] = {
      {&P::azimuth_, ParamKind::angle, &P::Prepare}, {&P::k0_, ParamKind::scale, &P::Prepare},
      {&P::lambdaC_, ParamKind::angle, &P::Prepare}, {&P::phiC_, ParamKind::angle, &P::Prepare},
      {&P::fEast_, ParamKind::length, &P::Prepare},  {&P::fNorth_, ParamKind::length, &P::Prepare},
  };
  return rows;
}

TRSOProj::TRSOProj()
    : TRSOProj(kWgs84A, kWgs84InvF, kMalayanAzimuth, kMalayanScale, kMalayanLon0, kMalayanLat0,
               kMalayanFalseEasting, 0) {}

TRSOProj::TRSOProj(double a, double invF, double azimuth, double scale, double lon0, double lat0,
                   double fEast, double fNorth)
    : HotineProj(ProjTypeRSO, Params().size(), a, invF, azimuth, scale, lon0, lat0, fEast, fNorth) {
  TRSOProj::Prepare();
}

double TRSOProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TRSOProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

void TRSOProj::Prepare() {
  const Hotine hotine(ell_, CentralLine());
  grid_ = HotineGrid(hotine, {hotine.sinGamma0, hotine.cosGamma0, fNorth_, fEast_});
}

}  // namespace zel_cs::geomath
