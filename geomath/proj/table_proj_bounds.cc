#include "geomath/proj/table_proj_bounds.h"

namespace zel_cs::geomath {

bool TTableProjBounds::Inside(double x, double y) const {
  const auto& [xMin, yMin, xMax, yMax] = edges_;
  return xMin < x && x < xMax && yMin < y && y < yMax;
}

}  // namespace zel_cs::geomath
