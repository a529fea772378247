#include "geomath/geoid/reg_geoid_interpalation4.h"

#include "geomath/geoid/grid_nodes.h"

namespace zel_cs::geomath {
namespace {

constexpr double kHighestNode = 150.0;  // metres: a node above it is a hole

}  // namespace

int RegGeoidInterpalation4::INTRP3(const void* data, int, TGridRgn&, int NY, int NX, double* point,
                                   double& height) const {
  const TGridRgn& grid = data_.grid;
  const double x = (point[0] - grid.B0) / grid.latStep, y = (point[1] - grid.L0) / grid.lonStep;
  const NodeIndex i = TruncIndex(x + 0.5), j = TruncIndex(y + 0.5);
  height = kNoHeight;
  if (i < 2 || i > NodeIndex{NY} - 1 || j < 2 || j > NodeIndex{NX} - 1) return 0;

  const bool southOf = static_cast<double>(i) * grid.latStep + grid.B0 < point[0];
  const bool westOf = static_cast<double>(j) * grid.lonStep + grid.L0 < point[1];
  const NodeIndex firstRow = southOf ? i - 1 : i - 2, firstColumn = westOf ? j - 1 : j - 2;
  const GridNodes nodes(data, RowStride(0, NX, sizeof(float)), NX, NY);
  const auto sum = WeightedSum4x4<float>(
      0, firstRow, CatmullRom(x - static_cast<double>(firstRow) - 1),
      CatmullRom(y - static_cast<double>(firstColumn) - 1), kHighestNode,
      [&](NodeIndex row, auto& z) { return nodes.Read(row, firstColumn, z); });
  height = sum.value_or(kNoHeight);
  return 0;
}

}  // namespace zel_cs::geomath
