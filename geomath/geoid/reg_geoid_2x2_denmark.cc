#include "geomath/geoid/reg_geoid_2x2_denmark.h"

#include "geomath/geoid/grid/bilinear.h"
#include "geomath/geoid/grid/grid_query.h"

namespace zel_cs::geomath {

int RegGeoid2x2Denmark::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                               double* point, double& height) const {
  height = HeightAt(BilinearNorthByDifferences{{data_.grid, NY, NX}},
                    GridNodes(data, rowStride, NX, NY), point, height);
  return 0;
}

bool RegGeoid2x2Denmark::RunColumns(GridQuery& query) const {
  return RunByKernel(*this, BilinearNorthByDifferences{{data_.grid, data_.NY, data_.NX}},
                     GridNodes(data_.data, rowStride_, data_.NX, data_.NY), query);
}

}  // namespace zel_cs::geomath
