#pragma once

#include "geomath/geoid/grid/grid_query.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// A grid of floats at every whole kilometre of a map projection, rows from the south.
struct KilometreGrid {
  const TGeoProj* projection;
  int rowLength;                 // nodes in a row
  double firstEast, firstNorth;  // of node 0, kilometres
};

/// Bilinear interpolation at latitude and longitude over the NX × NY values at `data`; kNoHeight
/// where a node is not among them. Returns 1 when the projection fails, else 0. Positions are cut
/// towards node 0 (Kept), so that a point less than a kilometre west or south of it is extrapolated
/// from the first cell.
int Interpolate(const KilometreGrid& grid, const void* data, int NX, int NY, const double* point,
                double& height);

/// Runs a query likewise, by the kernel of KilometreCells where its cells are whole. False, nothing
/// done, when there are none.
bool RunColumns(const KilometreGrid& grid, const void* data, int NX, int NY, GridQuery& query);

}  // namespace zel_cs::geomath
