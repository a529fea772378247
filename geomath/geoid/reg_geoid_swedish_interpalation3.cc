#include "geomath/geoid/reg_geoid_swedish_interpalation3.h"

#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/grid_query.h"

namespace zel_cs::geomath {

int RegGeoidSwedishInterpalation3::INTRP3(const void* data, int rowStride, TGridRgn&, int NY,
                                          int NX, double* point, double& height) const {
  height = HeightAt(Biquadratic{{data_.grid, NY, NX}},
                    GridNodes(data, rowStride, NX, NY, {.northFirst = true}), point, height);
  return 0;
}

bool RegGeoidSwedishInterpalation3::RunColumns(GridQuery& query) const {
  return RunByKernel(*this, Biquadratic{{data_.grid, data_.NY, data_.NX}},
                     GridNodes(data_.data, rowStride_, data_.NX, data_.NY, {.northFirst = true}),
                     query);
}

}  // namespace zel_cs::geomath
