#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

constexpr int kMaxCorrections = 2;  // in each direction

}  // namespace

double SetValue(double x, int kind) {
  const double upper = kind != 0 ? kPi : kHalfPi;
  const double lower = -upper;
  for (int i = 0; i < kMaxCorrections && x > upper; ++i) x -= upper - lower;
  for (int i = 0; i < kMaxCorrections && x < lower; ++i) x += upper - lower;
  return x;
}

double DMSToDeg(double x) { return x; }

}  // namespace zel_cs::geomath
