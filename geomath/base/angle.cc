#include "geomath/base/angle.h"

#include "geomath/base/internal/fold_angle.h"

namespace zel_cs::geomath {

double SetValue(double x, int kind) { return FoldAngle(x, kind != 0 ? kPi : kHalfPi); }

double DMSToDeg(double x) { return x; }

}  // namespace zel_cs::geomath
