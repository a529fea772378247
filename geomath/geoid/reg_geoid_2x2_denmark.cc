#include "geomath/geoid/reg_geoid_2x2_denmark.h"

#include "geomath/base/angle.h"
#include "geomath/geoid/grid_nodes.h"

namespace zel_cs::geomath {

int RegGeoid2x2Denmark::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                               double* point, double& height) const {
  const TGridRgn& grid = data_.grid;
  const double x = (grid.B0 + grid.dB - point[0]) / grid.latStep;
  const double y = SetValue(point[1] - grid.L0, 1) / grid.lonStep;
  height = kNoHeight;
  const auto cell = CellAt(x, y, NX, NY);
  if (!cell) return 0;
  CellCorners z;
  if (z.Read(GridNodes(data, rowStride, NX, NY), *cell))
    height = BilinearByDifferences(cell->u, cell->v, z.low[0], z.low[1], z.high[0], z.high[1]);
  return 0;
}

}  // namespace zel_cs::geomath
