#include "geomath/chain/geoid_height.h"

#include <limits>

namespace zel_cs::geomath {

GeoidHeight::~GeoidHeight() = default;

void GeoidHeight::Heights(const double* b, const double* l, double* heights,
                          std::size_t count) const {
  for (std::size_t i = 0; i < count; ++i) {
    if (!Height(b[i], l[i], heights[i])) heights[i] = std::numeric_limits<double>::quiet_NaN();
  }
}

}  // namespace zel_cs::geomath
