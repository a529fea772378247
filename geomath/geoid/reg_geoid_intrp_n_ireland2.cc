#include "geomath/geoid/reg_geoid_intrp_n_ireland2.h"

#include <typeinfo>

#include "geomath/base/angle.h"
#include "geomath/geoid/grid/kilometre_grid.h"
#include "geomath/proj/methods/tm_proj.h"

namespace zel_cs::geomath {
namespace {

const KilometreGrid& GridOfNorthernIreland() {
  static const TTMProj projection(6378137, 298.257222101, -8 * kRadPerDeg, 0.99982,
                                  53.5 * kRadPerDeg, 600000, 750000);
  static constexpr int kRowLength = 251;
  static const KilometreGrid grid{&projection, kRowLength, 550, 800};
  return grid;
}

}  // namespace

int RegGeoidIntrpNIreland2::INTRP3(const void* data, int, TGridRgn&, int NY, int NX, double* point,
                                   double& height) const {
  return Interpolate(GridOfNorthernIreland(), data, NX, NY, point, height);
}

bool RegGeoidIntrpNIreland2::RunColumns(GridQuery& query) const {
  return typeid(*this) == typeid(RegGeoidIntrpNIreland2) &&
         geomath::RunColumns(GridOfNorthernIreland(), data_.data, data_.NX, data_.NY, query);
}

}  // namespace zel_cs::geomath
