#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Cubic convolution (Keys 1981, parameter −1/2) over 4 × 4 nodes, rows from the north without
/// padding: floats in metres when the record's scale is exactly 1, otherwise 32-bit integers that
/// the scale is multiplied with (Kept: multiplied, not divided by). The point lies between the
/// second and the third row and column of its stencil. A node above 150 m is a hole. No height where
/// the nearest node, counted from the north-west, is one of the first two rows or columns.
class GEOMATH_API RegGeoidInterpalation4x4NW : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
