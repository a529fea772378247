#include "geomath/geoid/reg_geoid_intrp_lagrange_4x4_sw.h"

#include <array>

#include "geomath/geoid/grid_nodes.h"

namespace zel_cs::geomath {
namespace {

constexpr double kHighestNode = 150.0;  // metres: a node above it is a hole

/// The stencil's first row: the one before the point's cell, moved by one in the edge cells.
NodeIndex FirstRow(NodeIndex cell, int rows) {
  const NodeIndex first = cell - 1;
  if (first < 0) return first + 1;
  return first + 3 >= rows ? first - 1 : first;
}

std::array<double, 4> Coordinates(NodeIndex first, double start, double step) {
  std::array<double, 4> at;
  for (std::size_t k = 0; k < 4; ++k)
    at[k] = static_cast<double>(first + static_cast<NodeIndex>(k)) * step + start;
  return at;
}

}  // namespace

int RegGeoidIntrp_Lagrange4x4SW::INTRP3(const void* data, int, TGridRgn&, int NY, int NX,
                                        double* point, double& height) const {
  const TGridRgn& grid = data_.grid;
  const double x = (point[0] - grid.B0) / grid.latStep, y = (point[1] - grid.L0) / grid.lonStep;
  const NodeIndex j = TruncIndex(y + 0.5);
  const bool westOf = static_cast<double>(j) * grid.lonStep + grid.L0 < point[1];
  const NodeIndex firstRow = FirstRow(TruncIndex(x), NY), firstColumn = westOf ? j - 1 : j - 2;
  const GridNodes nodes(data, RowStride(0, NX, sizeof(float)), NX, NY);
  const auto sum = WeightedSum4x4<float>(
      0, firstRow, Lagrange(point[0], Coordinates(firstRow, grid.B0, grid.latStep)),
      Lagrange(point[1], Coordinates(firstColumn, grid.L0, grid.lonStep)), kHighestNode,
      [&](NodeIndex row, auto& z) { return nodes.Read(row, firstColumn, z); });
  height = sum.value_or(kNoHeight);
  return 0;
}

}  // namespace zel_cs::geomath
