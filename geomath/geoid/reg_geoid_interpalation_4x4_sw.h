#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Cubic convolution (Keys 1981, parameter −1/2) over the 4 × 4 floats around the point's cell, rows
/// from the south without padding. A node above 150 m is a hole, and so is one outside the grid.
///
/// Kept: the result is added to what the height slot holds, so that callers pass zeroed heights.
class GEOMATH_API RegGeoidInterpalation4x4SW : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
