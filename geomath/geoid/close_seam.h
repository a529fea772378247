#pragma once

#include <optional>
#include <vector>

#include "geomath/base/grid_rgn.h"
#include "geomath/export.h"

namespace zel_cs::geomath {

/// A grid around the whole Earth whose columns are repeated past both ends, so that every stencil
/// that a scheme places around a point is whole.
struct ClosedGrid {
  TGridRgn grid;             ///< radians, wider than a turn
  int NX;                    ///< columns
  int NY;                    ///< rows
  int repeated;              ///< columns before the first one of the grid that was given
  std::vector<float> nodes;  ///< rows in the order given
};

/// Closes a grid of NY rows of NX floats at its seam, before a RegionalGeoid of any scheme is made of
/// it: the classes know no seam, and next to it give no height or a wrong one. The step must divide
/// the turn to 1e-6 of itself; the last column may be the first one once more. Nothing for a grid
/// that does not reach around the Earth. Throws std::bad_alloc.
GEOMATH_API std::optional<ClosedGrid> CloseSeam(const TGridRgn& grid, int NX, int NY,
                                                const float* nodes);

}  // namespace zel_cs::geomath
