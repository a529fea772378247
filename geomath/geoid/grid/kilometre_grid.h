#pragma once

#include <optional>

#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// A grid of floats at every whole kilometre of a map projection, rows from the south.
struct KilometreGrid {
  const TGeoProj* projection;
  int rowLength;                 // nodes in a row
  double firstEast, firstNorth;  // of node 0, kilometres
};

/// Outcome of a look-up: the projection failed, a node is not in the grid, or `height` is set.
enum class KilometreResult { projectionFailed, noNode, done };

/// Bilinear interpolation at latitude and longitude over the `count` values at `data`. Positions
/// are cut towards node 0 (Kept), so that a point less than a kilometre west or south of it is
/// extrapolated from the first cell.
KilometreResult Interpolate(const KilometreGrid& grid, const void* data, std::int64_t count,
                            const double* point, double& height);

}  // namespace zel_cs::geomath
