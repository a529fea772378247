#include "geomath/proj/methods/romania_ster.h"

namespace zel_cs::geomath {

TRomaniaSter::TRomaniaSter(double a, double invF, double lat0, double lon0, double scale,
                           double fEast, double fNorth)
    : TDoubleSter(ProjTypeRomaniaSter, a, invF, lat0, lon0, scale, fEast, fNorth) {}

}  // namespace zel_cs::geomath
