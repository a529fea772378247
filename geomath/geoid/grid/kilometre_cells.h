#pragma once

#include "geomath/geoid/grid/grid_stencil.h"
#include "geomath/geoid/grid/interpolants.h"

namespace zel_cs::geomath {

/// The bilinear rule over floats at every whole kilometre of a map projection, rows from the south, as
/// ProjectedGridKernel runs it. Positions are cut towards node 0.
struct KilometreCells {
  static constexpr int kSize = 2;
  static constexpr double kKilometre = 1000.0;  // metres
  double firstEast, firstNorth;                 // of node 0, kilometres
  double rows, columns;

  GEOMATH_INLINE Stencil Place(double north, double east) const {
    const double row = CutToWhole(north / kKilometre - firstNorth);
    const double column = CutToWhole(east / kKilometre - firstEast);
    const bool along = Between(row, 0, rows - kSize), across = Between(column, 0, columns - kSize);
    const bool inside = along & across;
    return {row, column, (north - kKilometre * (row + firstNorth)) / kKilometre,
            (east - kKilometre * (column + firstEast)) / kKilometre, inside};
  }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[2][2], double) const {
    return Bilinear(at.u, at.v, z[0][0], z[0][1], z[1][0], z[1][1]);
  }
};

}  // namespace zel_cs::geomath
