#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Bilinear interpolation in a grid of floats at every kilometre of Great Britain's National Grid on
/// GRS80 (transverse Mercator, central meridian −2°, scale 0.9996012717, origin 49° N, false
/// coordinates 400 km and −100 km): 701 nodes in a row, the first at the false origin. The record's
/// NX × NY only says how many values there are. No node is taken for a hole. INTRP3 returns 1 when
/// the projection fails.
class GEOMATH_API RegGeoidInterpalation2 : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
