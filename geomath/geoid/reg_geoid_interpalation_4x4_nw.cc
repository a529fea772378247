#include "geomath/geoid/reg_geoid_interpalation_4x4_nw.h"

#include <cstdint>

#include "geomath/geoid/grid/cubic.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

using Ruled = RuledGeoid<ConvolutionNorth, RowLayout{.packed = true}>;

/// The height from integers, in metres when multiplied with `scale`.
double HeightFromIntegers(const Ruled& ruled, double scale, const double* point) {
  const auto& [rule, nodes] = ruled;
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

int RegGeoidInterpalation4x4NW::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                                       double* point, double& height) const {
  const Ruled ruled(data_.grid, data, rowStride, NY, NX);
  height = data_.scale == 1.0 ? ruled.HeightAt(point, height)
                              : HeightFromIntegers(ruled, data_.scale, point);
  return 0;
}

bool RegGeoidInterpalation4x4NW::RunColumns(GridQuery& query) const {
  return data_.scale == 1.0 && Ruled(data_, rowStride_).Run(*this, query);
}

}  // namespace zel_cs::geomath
