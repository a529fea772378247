#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Bilinear interpolation, rows of floats from the south. No node is taken for a hole: a 20000
/// enters the sum. Kept: a point in the half cell north or east of the last nodes is extrapolated
/// from the last cell, one in the half cell south or west of the first nodes gets no height; so
/// does one more than half a turn east of the western edge.
class GEOMATH_API RegGeoid2x2SW : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
