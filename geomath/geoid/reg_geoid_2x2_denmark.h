#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Bilinear interpolation, rows of floats from the north, written with node differences that are
/// formed in single precision (Kept: it changes the last digits). Holes and edges are as in
/// RegGeoid2x2SW, with north and south exchanged.
class GEOMATH_API RegGeoid2x2Denmark : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
