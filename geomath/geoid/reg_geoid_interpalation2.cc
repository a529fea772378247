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
  return Interpolate(grid, data, NX, NY, point, height);
}

}  // namespace zel_cs::geomath
