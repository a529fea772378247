#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Bilinear interpolation in a grid of floats at every kilometre of an Irish transverse Mercator on
/// GRS80 (central meridian −8°, scale 0.99982, origin 53.5° N, false coordinates 600 km and
/// 750 km): 251 nodes in a row, the first at 550 km east and 800 km north. The record's NX × NY
/// only says how many values there are. No node is taken for a hole. INTRP3 returns 1 when the
/// projection fails.
class GEOMATH_API RegGeoidIntrpNIreland2 : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
