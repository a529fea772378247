#pragma once

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/geoid/grid/grid_stencil.h"
#include "geomath/geoid/grid/interpolants.h"

/// The bilinear rules over 2 × 2 floats, as GridKernel runs them.
namespace zel_cs::geomath {

/// Rows from the south.
struct BilinearSouth {
  static constexpr int kSize = 2;
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const AxisCell row = CellOf((lat - grid.south) / grid.latStep, grid.rows);
    const AxisCell column = CellOf(FoldTurn(lon - grid.west) / grid.lonStep, grid.columns);
    const bool inside = row.inside & column.inside;
    return {row.first, column.first, row.fraction, column.fraction, inside};
  }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[2][2], double) const {
    return Bilinear(at.u, at.v, z[0][0], z[0][1], z[1][0], z[1][1]);
  }
};

/// Rows from the north, written with differences.
struct BilinearNorthByDifferences {
  static constexpr int kSize = 2;
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const AxisCell row = CellOf((grid.north - lat) / grid.latStep, grid.rows);
    const AxisCell column = CellOf(FoldTurn(lon - grid.west) / grid.lonStep, grid.columns);
    const bool inside = row.inside & column.inside;
    return {row.first, column.first, row.fraction, column.fraction, inside};
  }
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
    const AxisCell row = CellOf((grid.north - lat) / grid.latStep, grid.rows);
    const AxisCell column = CellOf(fromWest / grid.lonStep, grid.columns);
    const double nodeLon = FoldTurn(column.first * grid.lonStep + grid.west);
    const double v = FoldTurn(lon - nodeLon) / grid.lonStep;
    const bool inside = row.inside & column.inside;
    return {row.first, column.first, row.fraction, v, inside};
  }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[2][2], double) const {
    return Bilinear(at.u, at.v, z[0][0], z[0][1], z[1][0], z[1][1]);
  }
};

}  // namespace zel_cs::geomath
