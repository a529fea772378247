#include "geomath/proj/methods/math/cassini.h"

#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

CassiniSoldner::CassiniSoldner(const Ellipsoid& ell, double lat0, double lon0, double axisAzimuth)
    : a_(ell.a),
      e2_(ell.e2),
      ep2_(ell.ep2),
      lambda0_(lon0),
      meridian_(ell),
      m0_(meridian_.Arc(lat0)),
      sinTheta_(Sin(axisAzimuth)),
      cosTheta_(Cos(axisAzimuth)) {}

}  // namespace zel_cs::geomath
