#include "geomath/proj/methods/spc_om83_proj.h"

#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

constexpr ParamRow TSPC_OM83Proj::kParams[] = {
    {"AxisAzimuth", Quantity::azimuth, &TSPC_OM83Proj::azimuth_},
    {"Scale", Quantity::scale, &TSPC_OM83Proj::k0_},
    {"Lon0", Quantity::longitude, &TSPC_OM83Proj::lambdaC_},
    {"Lat0", Quantity::latitude, &TSPC_OM83Proj::phiC_},
    {"East0", Quantity::easting, &TSPC_OM83Proj::fEast_},
    {"North0", Quantity::northing, &TSPC_OM83Proj::fNorth_},
    {"Zone number", Quantity::zone, &TSPC_OM83Proj::zone_},
};

int TSPC_OM83Proj::Zone() const { return ParamAsInt(zone_); }

std::span<const ParamRow> TSPC_OM83Proj::Params() const { return kParams; }

TSPC_OM83Proj::TSPC_OM83Proj() : TSPC_OM83Proj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, 0, 0) {}

TSPC_OM83Proj::TSPC_OM83Proj(double a, double invF, double azimuth, double scale, double lon0,
                             double lat0, double fEast, double fNorth, int zone)
    : HotineProj(ProjTypeSPC_OM83, kParams, a, invF, azimuth, scale, lon0, lat0, fEast, fNorth),
      zone_(zone) {}

}  // namespace zel_cs::geomath
