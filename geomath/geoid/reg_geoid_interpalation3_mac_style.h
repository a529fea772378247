#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// The base class's 3 × 3 scheme over floats stored in the opposite byte order.
class GEOMATH_API RegGeoidInterpalation3MACStyle : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
