#include "geomath/geoid/reg_geoid_interpalation2.h"

#include "geomath/base/angle.h"
#include "geomath/geoid/grid/kilometre_grid.h"
#include "geomath/proj/methods/tm_proj.h"

namespace zel_cs::geomath {

int RegGeoidInterpalation2::INTRP3(const void* data, int, TGridRgn&, int NY, int NX, double* point,
                                   double& height) const {
  static const TTMProj projection(6378137, 298.257222101, -2 * kRadPerDeg, 0.9996012717,
                                  49 * kRadPerDeg, 400000, -100000);
  static constexpr int kRowLength = 701;
  const KilometreGrid grid{&projection, kRowLength, 0, 0};
  height = kNoHeight;
  const std::int64_t count = NX > 0 && NY > 0 ? std::int64_t{NX} * NY : 0;
  const KilometreResult result = Interpolate(grid, data, count, point, height);
  return result == KilometreResult::projectionFailed ? 1 : 0;
}

}  // namespace zel_cs::geomath
