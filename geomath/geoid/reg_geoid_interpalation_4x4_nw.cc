#include "geomath/geoid/reg_geoid_interpalation_4x4_nw.h"

#include <cstdint>

#include "geomath/geoid/grid/cubic.h"
#include "geomath/geoid/grid/grid_query.h"

namespace zel_cs::geomath {
namespace {

/// The height from integers, in metres when multiplied with `scale`.
double HeightFromIntegers(const ConvolutionNorth& rule, const GridNodes& nodes, double scale,
                          const double* point) {
  const Stencil at = rule.Place(point[0], point[1]);
  if (!at.inside || !nodes.HoldStencils<std::int32_t, 4>()) return kNoHeight;
  std::int32_t stored[4][4];
  double metres[4][4];
  nodes.ReadStencil(at.row, at.column, stored);
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) metres[r][c] = scale * stored[r][c];
  return rule.Height(at, metres, 0);
}

}  // namespace

int RegGeoidInterpalation4x4NW::INTRP3(const void* data, int, TGridRgn&, int NY, int NX,
                                       double* point, double& height) const {
  const ConvolutionNorth rule{{data_.grid, NY, NX}};
  const GridNodes nodes(data, RowStride(0, NX, sizeof(float)), NX, NY);
  height = data_.scale == 1.0 ? HeightAt(rule, nodes, point, height)
                              : HeightFromIntegers(rule, nodes, data_.scale, point);
  return 0;
}

bool RegGeoidInterpalation4x4NW::RunColumns(GridQuery& query) const {
  const GridNodes nodes(data_.data, RowStride(0, data_.NX, sizeof(float)), data_.NX, data_.NY);
  return data_.scale == 1.0 &&
         RunByKernel(*this, ConvolutionNorth{{data_.grid, data_.NY, data_.NX}}, nodes, query);
}

}  // namespace zel_cs::geomath
