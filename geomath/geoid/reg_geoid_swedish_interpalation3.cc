#include "geomath/geoid/reg_geoid_swedish_interpalation3.h"

#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

using Ruled = RuledGeoid<Biquadratic, RowLayout{.northFirst = true}>;

}  // namespace

int RegGeoidSwedishInterpalation3::INTRP3(const void* data, int rowStride, TGridRgn&, int NY,
                                          int NX, double* point, double& height) const {
  height = Ruled(data_.grid, data, rowStride, NY, NX).HeightAt(point, height);
  return 0;
}

bool RegGeoidSwedishInterpalation3::RunColumns(GridQuery& query) const {
  return Ruled(data_, rowStride_).Run(*this, query);
}

}  // namespace zel_cs::geomath
