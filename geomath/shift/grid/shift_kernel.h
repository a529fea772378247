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

/// The conversions of shift grids over columns of at most kBatchBlock points. kComponents is 1 for
/// heights, 2 for north and east, 3 for both. Every combination is instantiated in a kernel source.
template <class Target, class Rule, int kComponents>
struct ShiftKernel {
  /// The interpolated components at points, NaN in a hole.
  static void Values(const ShiftNodes& nodes, const double* north, const double* east,
                     double* const* values, std::size_t count, ShiftStatus* status);
  static void Forward(const ShiftNodes& nodes, double* const* point, std::size_t count,
                      ShiftStatus* status);
  static void Inverse(const ShiftNodes& nodes, double* const* point, std::size_t count,
                      ShiftStatus* status);
};

}  // namespace zel_cs::geomath
