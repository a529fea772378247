#include "geomath/geoid/reg_geoid_interpalation_4x4_sw.h"

#include "geomath/geoid/grid/cubic.h"
#include "geomath/geoid/grid/grid_query.h"

namespace zel_cs::geomath {

int RegGeoidInterpalation4x4SW::INTRP3(const void* data, int, TGridRgn&, int NY, int NX,
                                       double* point, double& height) const {
  height = HeightAt(ConvolutionByCell{{data_.grid, NY, NX}},
                    GridNodes(data, RowStride(0, NX, sizeof(float)), NX, NY), point, height);
  return 0;
}

bool RegGeoidInterpalation4x4SW::RunColumns(GridQuery& query) const {
  return RunByKernel(
      *this, ConvolutionByCell{{data_.grid, data_.NY, data_.NX}},
      GridNodes(data_.data, RowStride(0, data_.NX, sizeof(float)), data_.NX, data_.NY), query);
}

}  // namespace zel_cs::geomath
