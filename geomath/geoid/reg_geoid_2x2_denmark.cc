#include "geomath/geoid/reg_geoid_2x2_denmark.h"

#include "geomath/geoid/grid/bilinear.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

using Ruled = RuledGeoid<BilinearNorthByDifferences>;

}  // namespace

int RegGeoid2x2Denmark::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                               double* point, double& height) const {
  height = Ruled(data_.grid, data, rowStride, NY, NX).HeightAt(point, height);
  return 0;
}

bool RegGeoid2x2Denmark::RunColumns(GridQuery& query) const {
  return Ruled(data_, rowStride_).Run(*this, query);
}

}  // namespace zel_cs::geomath
