#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// The base class's 3 × 3 scheme over rows that begin with one 4-byte word, which is skipped. The
/// record's row padding is ignored.
class GEOMATH_API RegGeoid95Interpalation3 : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  RegGeoid95Interpalation3(const RegionalGeoidData& data);
  /// Constructed as RegionalGeoid is.
  RegGeoid95Interpalation3(const TGridRgn& grid, int NX, int NY, const void* data, double DISMOD,
                           const wchar_t* datumName, const wchar_t* interpolationType);

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 protected:
  void InitData() override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
