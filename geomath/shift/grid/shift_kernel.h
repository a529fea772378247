#pragma once

#include <cstddef>

#include "geomath/shift/coordinate_shift.h"
#include "geomath/shift/grid/part_frame.h"

namespace zel_cs::geomath {

/// A grid whose nodes hold shifts in coordinate units.
struct ShiftNodes {
  GridParts grid;
  double offset[3];  // added to the shifted coordinates
  double reach[2];   // no point is shifted farther, north and east
};

/// Where the surfaces of components go that are interpolated at points.
struct NodeSurface {
  double *value[3], *alongNorth[3], *alongEast[3];  // slopes per unit of the coordinates
};

/// Beside those of a bilinear surface: the mixed derivatives, and how far to the north or south and to
/// the east or west all of this holds: up to the nearest lines between nodes, nowhere within `reach` of
/// another part that would be asked first, and up to infinity where nothing of the grid is within it.
struct CellSurface : NodeSurface {
  double *twist[3], *roomNorth, *roomEast;
  double reach;
};

/// The conversions of shift grids over columns of at most kBatchBlock points. kComponents is 1 for
/// heights, 2 for north and east, 3 for both. Every combination is instantiated in a kernel source.
template <class Target, class Rule, int kComponents>
struct ShiftKernel {
  /// The interpolated components at points, NaN in a hole.
  static void Values(const ShiftNodes& nodes, const double* north, const double* east,
                     double* const* values, std::size_t count, ShiftStatus* status);
  /// The surface at points, not finite in a hole.
  static void Surface(const ShiftNodes& nodes, const double* north, const double* east,
                      const NodeSurface& surface, std::size_t count, ShiftStatus* status);
  static void Forward(const ShiftNodes& nodes, double* const* point, std::size_t count,
                      ShiftStatus* status);
  static void Inverse(const ShiftNodes& nodes, double* const* point, std::size_t count,
                      ShiftStatus* status);
};

/// The surfaces of bilinear grids with the cells in which they hold.
template <class Target, int kComponents>
struct CellKernel {
  static void Surface(const ShiftNodes& nodes, const double* north, const double* east,
                      const CellSurface& surface, std::size_t count, ShiftStatus* status);
};

}  // namespace zel_cs::geomath
