#include "geomath/geoid/reg_geoid_swedish_interpalation3.h"

#include "geomath/geoid/biquadratic.h"

namespace zel_cs::geomath {

int RegGeoidSwedishInterpalation3::INTRP3(const void* data, int rowStride, TGridRgn&, int NY,
                                          int NX, double* point, double& height) const {
  const GridNodes nodes(data, rowStride, NX, NY);
  const TGridRgn& grid = data_.grid;
  height = Biquadratic(grid, NY, NX, point, [&](NodeIndex row, NodeIndex j, double offset) {
    return ParabolaOfRow(grid.lonStep, offset, nodes, NodeIndex{NY} - 1 - row, j);
  });
  return 0;
}

}  // namespace zel_cs::geomath
