#include "geomath/geoid/reg_geoid_interpalation2.h"

#include <typeinfo>

#include "geomath/base/angle.h"
#include "geomath/geoid/grid/kilometre_grid.h"
#include "geomath/proj/methods/tm_proj.h"

namespace zel_cs::geomath {
namespace {

const KilometreGrid& GridOfBritain() {
  static const TTMProj projection(6378137, 298.257222101, -2 * kRadPerDeg, 0.9996012717,
                                  49 * kRadPerDeg, 400000, -100000);
  static constexpr int kRowLength = 701;
  static const KilometreGrid grid{&projection, kRowLength, 0, 0};
  return grid;
}

}  // namespace

int RegGeoidInterpalation2::INTRP3(const void* data, int, TGridRgn&, int NY, int NX, double* point,
                                   double& height) const {
  return Interpolate(GridOfBritain(), data, NX, NY, point, height);
}

bool RegGeoidInterpalation2::RunColumns(GridQuery& query) const {
  return typeid(*this) == typeid(RegGeoidInterpalation2) &&
         geomath::RunColumns(GridOfBritain(), data_.data, data_.NX, data_.NY, query);
}

}  // namespace zel_cs::geomath
