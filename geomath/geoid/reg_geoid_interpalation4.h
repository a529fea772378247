#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Cubic convolution (Keys 1981, parameter −1/2) over 4 × 4 floats, rows from the south without
/// padding. A node above 150 m is a hole. No height where the nearest node is one of the first two
/// rows or columns (Kept, although the stencil may lie inside), or where the stencil leaves the grid.
class GEOMATH_API RegGeoidInterpalation4 : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
