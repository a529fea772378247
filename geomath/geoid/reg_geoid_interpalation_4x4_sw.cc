#include "geomath/geoid/reg_geoid_interpalation_4x4_sw.h"

#include "geomath/geoid/grid/cubic.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

using Ruled = RuledGeoid<ConvolutionByCell, RowLayout{.packed = true}>;

}  // namespace

int RegGeoidInterpalation4x4SW::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                                       double* point, double& height) const {
  height = Ruled(data_.grid, data, rowStride, NY, NX).HeightAt(point, height);
  return 0;
}

bool RegGeoidInterpalation4x4SW::RunColumns(GridQuery& query) const {
  return Ruled(data_, rowStride_).Run(*this, query);
}

}  // namespace zel_cs::geomath
