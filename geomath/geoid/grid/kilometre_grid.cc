#include "geomath/geoid/grid/kilometre_grid.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/interpolants.h"
#include "geomath/geoid/grid/kilometre_cells.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {
namespace {

constexpr double kKilometre = KilometreCells::kKilometre;

/// Stored values; the last row may not be whole.
NodeIndex CountOf(int NX, int NY) { return NX > 0 && NY > 0 ? NodeIndex{NX} * NY : 0; }

}  // namespace

int Interpolate(const KilometreGrid& grid, const void* data, int NX, int NY, const double* point,
                double& height) {
  height = kNoHeight;
  double north = point[0], east = point[1];
  if (!grid.projection->ForwardPoint(north, east)) return 1;
  const NodeIndex column = TruncIndex(east / kKilometre - grid.firstEast);
  const NodeIndex row = TruncIndex(north / kKilometre - grid.firstNorth);
  if (column < 0 || column + 1 >= grid.rowLength || row < 0) return 0;
  const NodeIndex first = column + grid.rowLength * row;
  if (!data || first + grid.rowLength + 1 >= CountOf(NX, NY)) return 0;

  float south[2], northern[2];
  const auto* z = static_cast<const unsigned char*>(data) + first * NodeIndex{sizeof(float)};
  std::memcpy(south, z, sizeof south);
  std::memcpy(northern, z + grid.rowLength * NodeIndex{sizeof(float)}, sizeof northern);
  const double westEdge = kKilometre * (static_cast<double>(column) + grid.firstEast);
  const double southEdge = kKilometre * (static_cast<double>(row) + grid.firstNorth);
  height = Bilinear((north - southEdge) / kKilometre, (east - westEdge) / kKilometre, south[0],
                    south[1], northern[0], northern[1]);
  return 0;
}

bool RunColumns(const KilometreGrid& grid, const void* data, int NX, int NY, GridQuery& query) {
  const int rows = static_cast<int>(std::min(CountOf(NX, NY) / grid.rowLength, NodeIndex{INT_MAX}));
  const GridNodes nodes(data, RowStride(0, grid.rowLength, sizeof(float)), grid.rowLength, rows);
  if (!nodes.HoldStencils<float, KilometreCells::kSize>()) return false;
  const KilometreCells rule{grid.firstEast, grid.firstNorth, static_cast<double>(rows),
                            static_cast<double>(grid.rowLength)};
  const auto kernel = simd::ForActiveSet(
      [](auto target) { return &ProjectedGridKernel<decltype(target), KilometreCells>::Heights; });
  RunBlocks(query, [&](std::size_t first, std::size_t n, const double* lat, const double* lon) {
    double north[kGridBlock], east[kGridBlock], heights[kGridBlock];
    LocateBlock(query.bounds, lat, lon, n, north, east);
    grid.projection->ForwardBatch(north, east, n);
    kernel(rule, nodes, north, east, heights, n);
    return TakeHeights(query, first, n, heights, [&](double* point, double& height) {
      return Interpolate(grid, data, NX, NY, point, height);
    });
  });
  return true;
}

}  // namespace zel_cs::geomath
