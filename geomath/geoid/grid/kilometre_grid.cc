#include "geomath/geoid/grid/kilometre_grid.h"

#include <cstring>

#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_nodes.h"
#include "geomath/geoid/grid/interpolants.h"

namespace zel_cs::geomath {
namespace {

constexpr double kKilometre = 1000.0;  // metres

}  // namespace

int Interpolate(const KilometreGrid& grid, const void* data, int NX, int NY, const double* point,
                double& height) {
  height = kNoHeight;
  double north = point[0], east = point[1];
  if (!grid.projection->ForwardPoint(north, east)) return 1;
  const NodeIndex column = TruncIndex(east / kKilometre - grid.firstEast);
  const NodeIndex row = TruncIndex(north / kKilometre - grid.firstNorth);
  if (column < 0 || column + 1 >= grid.rowLength || row < 0) return 0;
  const NodeIndex count = NX > 0 && NY > 0 ? NodeIndex{NX} * NY : 0;
  const NodeIndex first = column + grid.rowLength * row;
  if (!data || first + grid.rowLength + 1 >= count) return 0;

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

}  // namespace zel_cs::geomath
