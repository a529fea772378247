#pragma once

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/geoid/grid/grid_stencil.h"
#include "geomath/geoid/grid/interpolants.h"

/// The bilinear rules over 2 × 2 floats, as GridKernel runs them.
namespace zel_cs::geomath {

/// The cell of a point by its distances, radians, from the first row and column.
GEOMATH_INLINE Stencil PlaceInCells(const GridFrame& grid, double acrossRows,
                                    double acrossColumns) {
  const AxisCell row = CellOf(acrossRows / grid.latStep, grid.rows);
  const AxisCell column = CellOf(acrossColumns / grid.lonStep, grid.columns);
  const bool inside = row.inside & column.inside;
  return {row.first, column.first, row.fraction, column.fraction, inside};
}

/// Rows from the south.
struct BilinearSouth {
  static constexpr int kSize = 2;
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    return PlaceInCells(grid, lat - grid.south, FoldTurn(lon - grid.west));
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.StepsPerRadian(); }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[2][2], double) const {
    return Bilinear(at.u, at.v, z[0][0], z[0][1], z[1][0], z[1][1]);
  }
};

/// Rows from the north, written with differences.
struct BilinearNorthByDifferences {
  static constexpr int kSize = 2;
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    return PlaceInCells(grid, grid.north - lat, FoldTurn(lon - grid.west));
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.SouthStepsPerRadian(); }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[2][2], double) const {
    return BilinearByDifferences(at.u, at.v, z[0][0], z[0][1], z[1][0], z[1][1]);
  }
};

/// Rows from the north, longitudes compared after reduction to half a turn.
struct BilinearNorth {
  static constexpr int kSize = 2;
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const double fromWest = FoldTurn((lon + kTwoPi) - (grid.west + kTwoPi));
    Stencil at = PlaceInCells(grid, grid.north - lat, fromWest);
    at.v = FoldTurn(lon - FoldTurn(at.column * grid.lonStep + grid.west)) / grid.lonStep;
    return at;
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.SouthStepsPerRadian(); }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[2][2], double) const {
    return Bilinear(at.u, at.v, z[0][0], z[0][1], z[1][0], z[1][1]);
  }
};

}  // namespace zel_cs::geomath
