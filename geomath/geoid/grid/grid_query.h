#pragma once

#include <cstddef>

#include "geomath/base/rect_bounds.h"
#include "geomath/geoid/grid/grid_kernel.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

/// Points whose heights are asked for, and what became of them.
struct GridQuery {
  const TAbstractPoint3<double>* points;
  double* heights;
  std::size_t count;
  RectBounds bounds;
  GridTally tally;
};

}  // namespace zel_cs::geomath
