#include "geomath/proj/methods/math/county_ellipsoid.h"

namespace zel_cs::geomath {

Ellipsoid CountyEllipsoid(const Ellipsoid& base, double desElA, double desElB,
                          double elevationShift, double geoidHeight) {
  const double lift = elevationShift + geoidHeight;
  Ellipsoid lifted;
  lifted.a = (desElA > 0 ? desElA : base.a) + lift;
  lifted.b = (desElB > 0 ? desElB : base.b) + lift;
  lifted.SetEllipsoid(true);
  return lifted;
}

double CountyScale(double scale) { return scale > 0 ? scale : 1; }

}  // namespace zel_cs::geomath
