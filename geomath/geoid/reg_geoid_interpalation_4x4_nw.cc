#include "geomath/geoid/reg_geoid_interpalation_4x4_nw.h"

#include <cstdint>

#include "geomath/geoid/grid_nodes.h"

namespace zel_cs::geomath {
namespace {

constexpr double kHighestNode = 150.0;  // metres: a node above it is a hole

/// Four stored values from a row and column on, times `scale`.
template <class Stored>
bool ReadAs(const GridNodes& nodes, NodeIndex row, NodeIndex column, double scale,
            double (&metres)[4]) {
  Stored stored[4];
  if (!nodes.Read(row, column, stored)) return false;
  for (std::size_t c = 0; c < 4; ++c) metres[c] = scale * stored[c];
  return true;
}

}  // namespace

int RegGeoidInterpalation4x4NW::INTRP3(const void* data, int, TGridRgn&, int NY, int NX,
                                       double* point, double& height) const {
  const TGridRgn& grid = data_.grid;
  const double x = (grid.B0 + grid.dB - point[0]) / grid.latStep;
  const double y = (point[1] - grid.L0) / grid.lonStep;
  const NodeIndex i = TruncIndex(x + 0.5), j = TruncIndex(y + 0.5);
  height = kNoHeight;
  if (i < 2 || i > NodeIndex{NY} - 1 || j < 2 || j > NodeIndex{NX} - 1) return 0;

  const bool westOf = static_cast<double>(j) * grid.lonStep + grid.L0 < point[1];
  const NodeIndex firstRow = FloorIndex(x) - 1, firstColumn = westOf ? j - 1 : j - 2;
  const GridNodes nodes(data, RowStride(0, NX, sizeof(float)), NX, NY);
  const double scale = data_.scale;
  const auto metres = [&](NodeIndex row, double(&z)[4]) {
    return scale == 1.0 ? ReadAs<float>(nodes, row, firstColumn, scale, z)
                        : ReadAs<std::int32_t>(nodes, row, firstColumn, scale, z);
  };
  const auto sum = WeightedSum4x4<double>(
      0, firstRow, CatmullRom(x - static_cast<double>(firstRow) - 1),
      CatmullRom(y - static_cast<double>(firstColumn) - 1), kHighestNode, metres);
  height = sum.value_or(kNoHeight);
  return 0;
}

}  // namespace zel_cs::geomath
