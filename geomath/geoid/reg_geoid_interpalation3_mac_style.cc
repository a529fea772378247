#include "geomath/geoid/reg_geoid_interpalation3_mac_style.h"

#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/grid_query.h"

namespace zel_cs::geomath {

int RegGeoidInterpalation3MACStyle::INTRP3(const void* data, int rowStride, TGridRgn&, int NY,
                                           int NX, double* point, double& height) const {
  height = HeightAt(Biquadratic{{data_.grid, NY, NX}},
                    GridNodes(data, rowStride, NX, NY, {.swapped = true}), point, height);
  return 0;
}

bool RegGeoidInterpalation3MACStyle::RunColumns(GridQuery& query) const {
  return RunByKernel(*this, Biquadratic{{data_.grid, data_.NY, data_.NX}},
                     GridNodes(data_.data, rowStride_, data_.NX, data_.NY, {.swapped = true}),
                     query);
}

}  // namespace zel_cs::geomath
