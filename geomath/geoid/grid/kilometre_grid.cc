#include "geomath/geoid/grid/kilometre_grid.h"

#include <cstring>

#include "geomath/geoid/grid/interpolants.h"

namespace zel_cs::geomath {
namespace {

constexpr double kKilometre = 1000.0;  // metres

}  // namespace

KilometreResult Interpolate(const KilometreGrid& grid, const void* data, std::int64_t count,
                            const double* point, double& height) {
  double north = point[0], east = point[1];
  if (!grid.projection->ForwardPoint(north, east)) return KilometreResult::projectionFailed;
  const NodeIndex column = TruncIndex(east / kKilometre - grid.firstEast);
  const NodeIndex row = TruncIndex(north / kKilometre - grid.firstNorth);
  if (column < 0 || column + 1 >= grid.rowLength || row < 0) return KilometreResult::noNode;
  const NodeIndex first = column + grid.rowLength * row;
  if (!data || first + grid.rowLength + 1 >= count) return KilometreResult::noNode;

  float south[2], northern[2];
  const auto* z = static_cast<const unsigned char*>(data) + first * NodeIndex{sizeof(float)};
  std::memcpy(south, z, sizeof south);
  std::memcpy(northern, z + grid.rowLength * NodeIndex{sizeof(float)}, sizeof northern);
  const double westEdge = kKilometre * (static_cast<double>(column) + grid.firstEast);
  const double southEdge = kKilometre * (static_cast<double>(row) + grid.firstNorth);
  height = Bilinear((north - southEdge) / kKilometre, (east - westEdge) / kKilometre, south[0],
                    south[1], northern[0], northern[1]);
  return KilometreResult::done;
}

}  // namespace zel_cs::geomath
