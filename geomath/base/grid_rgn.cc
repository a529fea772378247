#include "geomath/base/grid_rgn.h"

#include <limits>

namespace {

int NodeCount(double extent, double step) {
  if (step == 0) return 0;
  const double count = extent / step + 1.5;
  constexpr double kLimit = std::numeric_limits<int>::max();
  const bool fits = count > -kLimit && count < kLimit;  // false for NaN
  return fits ? static_cast<int>(count) : 0;
}

}  // namespace

int TGridRgn::GetLatDim() const { return NodeCount(dB, latStep); }
int TGridRgn::GetLonDim() const { return NodeCount(dL, lonStep); }

int TGridRgn::GetFullDim() const {
  const long long product = static_cast<long long>(GetLatDim()) * GetLonDim();
  const bool fits =
      product >= std::numeric_limits<int>::min() && product <= std::numeric_limits<int>::max();
  return fits ? static_cast<int>(product) : 0;
}
