#include "geomath/geoid/reg_geoid_interpalation3_mac_style.h"

#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

using Ruled = RuledGeoid<Biquadratic, RowLayout{.swapped = true}>;

}  // namespace

int RegGeoidInterpalation3MACStyle::INTRP3(const void* data, int rowStride, TGridRgn&, int NY,
                                           int NX, double* point, double& height) const {
  height = Ruled(data_.grid, data, rowStride, NY, NX).HeightAt(point, height);
  return 0;
}

bool RegGeoidInterpalation3MACStyle::RunColumns(GridQuery& query) const {
  return Ruled(data_, rowStride_).Run(*this, query);
}

}  // namespace zel_cs::geomath
