#include "geomath/proj/methods/rd_proj.h"

#include "geomath/proj/methods/math/latitude.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {
namespace {

constexpr double kRdScale = 0.9999079;

}  // namespace

constexpr ParamRow TRDProj::kParams[] = {
    {"Lat0", Quantity::latitude, &TRDProj::phi0_},
    {"Lon0", Quantity::longitude, &TRDProj::lambda0_},
    {"East0", Quantity::easting, &TRDProj::fEast_},
    {"North0", Quantity::northing, &TRDProj::fNorth_},
};

std::span<const ParamRow> TRDProj::Params() const { return kParams; }

TRDProj::TRDProj() : TRDProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TRDProj::TRDProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth)
    : TDoubleSter(ProjTypeRD, a, invF, lat0, lon0, kRdScale, fEast, fNorth) {
  paramCount_ = static_cast<int>(std::size(kParams));
}

bool TRDProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  return IsLatitude(b) && TDoubleSter::ProjectPoint(b, l, factors);
}

}  // namespace zel_cs::geomath
