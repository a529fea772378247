#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// The base class's 3 × 3 scheme over rows stored from the north. Nearest node and edges are still
/// counted from the south.
class GEOMATH_API RegGeoidSwedishInterpalation3 : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
