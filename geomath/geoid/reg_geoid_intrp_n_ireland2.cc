#include "geomath/geoid/reg_geoid_intrp_n_ireland2.h"

#include "geomath/base/angle.h"
#include "geomath/geoid/grid/kilometre_grid.h"
#include "geomath/proj/methods/tm_proj.h"

namespace zel_cs::geomath {

int RegGeoidIntrpNIreland2::INTRP3(const void* data, int, TGridRgn&, int NY, int NX, double* point,
                                   double& height) const {
  static const TTMProj projection(6378137, 298.257222101, -8 * kRadPerDeg, 0.99982,
                                  53.5 * kRadPerDeg, 600000, 750000);
  static constexpr int kRowLength = 251;
  const KilometreGrid grid{&projection, kRowLength, 550, 800};
  height = kNoHeight;
  const std::int64_t count = NX > 0 && NY > 0 ? std::int64_t{NX} * NY : 0;
  const KilometreResult result = Interpolate(grid, data, count, point, height);
  return result == KilometreResult::projectionFailed ? 1 : 0;
}

}  // namespace zel_cs::geomath
