#include "geomath/geodesic/grid_factors.h"

#include <limits>

namespace zel_cs::geomath {

PointFactors GridFactorsAt(const TGeoProj& proj, double b, double l) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  PointFactors factors{kNaN, kNaN};  // what a class does not compute stays
  if (!proj.ForwardPoint(b, l, &factors)) return {kNaN, kNaN};
  return factors;
}

}  // namespace zel_cs::geomath
