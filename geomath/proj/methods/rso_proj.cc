#include "geomath/proj/methods/rso_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/hotine_grid.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {
namespace {

// Malayan rectified skew orthomorphic grid; the false easting is 40000 chains.
constexpr double kMalayanAzimuth = -36.9742095 * kRadPerDeg;  // 323°01′32.8458″
constexpr double kMalayanScale = 0.99984;
constexpr double kMalayanLon0 = 102.25 * kRadPerDeg;
constexpr double kMalayanLat0 = 4 * kRadPerDeg;
constexpr double kMalayanFalseEasting = 804671.2996;  // metres

}  // namespace

constexpr ParamRow TRSOProj::kParams[] = {
    {"AxisAzimuth", Quantity::azimuth, &TRSOProj::azimuth_},
    {"Scale", Quantity::scale, &TRSOProj::k0_},
    {"Lon0", Quantity::longitude, &TRSOProj::lambdaC_},
    {"Lat0", Quantity::latitude, &TRSOProj::phiC_},
    {"East0", Quantity::easting, &TRSOProj::fEast_},
    {"North0", Quantity::northing, &TRSOProj::fNorth_},
};

std::span<const ParamRow> TRSOProj::Params() const { return kParams; }

TRSOProj::TRSOProj()
    : TRSOProj(kWgs84A, kWgs84InvF, kMalayanAzimuth, kMalayanScale, kMalayanLon0, kMalayanLat0,
               kMalayanFalseEasting, 0) {}

TRSOProj::TRSOProj(double a, double invF, double azimuth, double scale, double lon0, double lat0,
                   double fEast, double fNorth)
    : HotineProj(ProjTypeRSO, kParams, a, invF, azimuth, scale, lon0, lat0, fEast, fNorth) {
  TRSOProj::Prepare();
}

void TRSOProj::Prepare() {
  const Hotine hotine(ell_, {azimuth_, k0_, phiC_, lambdaC_});
  *grid_ = {hotine, {hotine.sinGamma0, hotine.cosGamma0, fNorth_, fEast_}};
}

}  // namespace zel_cs::geomath
