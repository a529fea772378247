#include "geomath/geoid/reg_geoid_interpalation_4x4_sw.h"

#include "geomath/geoid/grid_nodes.h"

namespace zel_cs::geomath {
namespace {

constexpr double kHighestNode = 150.0;  // metres: a node above it is a hole

}  // namespace

int RegGeoidInterpalation4x4SW::INTRP3(const void* data, int, TGridRgn&, int NY, int NX,
                                       double* point, double& height) const {
  const TGridRgn& grid = data_.grid;
  const double x = (point[0] - grid.B0) / grid.latStep, y = (point[1] - grid.L0) / grid.lonStep;
  const NodeIndex i = FloorIndex(x), j = FloorIndex(y);
  const GridNodes nodes(data, RowStride(0, NX, sizeof(float)), NX, NY);
  const auto sum = WeightedSum4x4<float>(
      height, i - 1, CatmullRom(x - static_cast<double>(i)), CatmullRom(y - static_cast<double>(j)),
      kHighestNode, [&](NodeIndex row, auto& z) { return nodes.Read(row, j - 1, z); });
  height = sum.value_or(kNoHeight);
  return 0;
}

}  // namespace zel_cs::geomath
