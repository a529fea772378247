#include "geomath/design/zone_definition.h"

#include "geomath/proj/methods/double_ster_proj.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/spc_om83_proj.h"
#include "geomath/proj/methods/utm_proj.h"

namespace zel_cs::geomath {

std::unique_ptr<TGeoProj> ZoneDefinition::Projection(const Ellipsoid& ellipsoid) const {
  const double a = ellipsoid.a, invF = ellipsoid.invF;
  switch (family) {
    case ZoneFamily::lambert:
      return std::make_unique<TLCProj>(a, invF, lat0, lat0, lon0, lat0, fEast, fNorth, scale);
    case ZoneFamily::obliqueMercator:
      return std::make_unique<TSPC_OM83Proj>(a, invF, azimuth, scale, lon0, lat0, fEast, fNorth, 0);
    case ZoneFamily::stereographic:
      return std::make_unique<TDoubleSter>(a, invF, lat0, lon0, scale, fEast, fNorth);
    case ZoneFamily::transverseMercator:
      break;
  }
  return std::make_unique<TUTMProj>(a, invF, lon0, scale, lat0, fEast, fNorth);
}

}  // namespace zel_cs::geomath
