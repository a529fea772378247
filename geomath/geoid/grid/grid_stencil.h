#pragma once

#include <cmath>

#include "geomath/base/grid_rgn.h"
#include "geomath/simd/kernel.h"
#include "geomath/simd/rounding.h"

/// Finding the nodes that a point is interpolated from: formulas without a branch or a call, which
/// one point and columns of points share.
namespace zel_cs::geomath {

/// Cuts to a whole number, towards zero.
GEOMATH_INLINE double CutToWhole(double x) { return std::copysign(RoundDown(std::abs(x)), x); }

/// Whether x lies in [low, high]; false for NaN.
GEOMATH_INLINE bool Between(double x, double low, double high) { return (x >= low) & (x <= high); }

/// How a stencil's u grows with latitude and v with longitude.
struct StencilSlopes {
  double u, v;
};

/// The geometry of a grid whose nodes are floats.
struct GridFrame {
  double south, north, west, latStep, lonStep;  // radians
  double rows, columns;

  GridFrame(const TGridRgn& grid, int NY, int NX)
      : south(grid.B0),
        north(grid.B0 + grid.dB),
        west(grid.L0),
        latStep(grid.latStep),
        lonStep(grid.lonStep),
        rows(NY),
        columns(NX) {}

  /// The slopes of positions in steps, whose rows count to the north.
  GEOMATH_INLINE StencilSlopes StepsPerRadian() const { return {1 / latStep, 1 / lonStep}; }
  /// The same, to the south.
  GEOMATH_INLINE StencilSlopes SouthStepsPerRadian() const { return {-1 / latStep, 1 / lonStep}; }

  /// Whether `size` rows and columns from these on are in the grid.
  GEOMATH_INLINE bool Holds(double row, double column, double size) const {
    const bool along = Between(row, 0, rows - size), across = Between(column, 0, columns - size);
    return along & across;
  }
};

/// Where a point stands among the nodes. Without `inside` a node of its stencil is not in the grid,
/// and nothing else here means anything.
struct Stencil {
  double row, column;  // the stencil's first, whole numbers, rows in the order of the rule
  double u, v;         // the point's position along columns and rows, as the rule measures it
  bool inside;
};

/// The cell of position x, in steps from the first of `count` nodes of an axis, and the fraction in
/// it. A point on or past the last node belongs to the last cell, with a fraction of 1 or more; one
/// before the first has none.
struct AxisCell {
  double first, fraction;
  bool inside;
};
GEOMATH_INLINE AxisCell CellOf(double x, double count) {
  const double node = RoundDown(x), first = node == count - 1 ? count - 2 : node;
  return {first, x - first, Between(first, 0, count - 2)};
}

/// Four rows and columns around the point's cell, moved inwards at the edges of the grid; u and v are
/// counted in steps from the first.
GEOMATH_INLINE Stencil PlaceInwards(const GridFrame& grid, double lat, double lon) {
  constexpr double kSize = 4;
  const auto first = [](double node, double count) {
    const double before = node - 1, last = count - kSize;
    const double inward = before < last ? before : last;
    return inward > 0 ? inward : 0.0;
  };
  const double x = (lat - grid.south) / grid.latStep, y = (lon - grid.west) / grid.lonStep;
  const AxisCell row = CellOf(x, grid.rows), column = CellOf(y, grid.columns);
  const double i = first(row.first, grid.rows), j = first(column.first, grid.columns);
  const bool inside = row.inside & column.inside;
  return {i, j, x - i, y - j, inside};
}

}  // namespace zel_cs::geomath
