#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// The base class's 3 × 3 scheme over scaled integers of 2 or 4 bytes, as the record's value size
/// says, rows from the north; metres are the stored value divided by the record's scale. No height
/// where a 16-bit node is ±32766 or beyond, a 32-bit node above 9990 m, a row value exactly 20000,
/// the scale 0 or the value size another one.
class GEOMATH_API RegGeoid3x3NWInterpalation : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  RegGeoid3x3NWInterpalation(const RegionalGeoidData& data);
  /// Constructed as RegionalGeoid is.
  RegGeoid3x3NWInterpalation(const TGridRgn& grid, int NX, int NY, const void* data, double DISMOD,
                             const wchar_t* datumName, const wchar_t* interpolationType);

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 protected:
  void InitData() override;

 private:
  bool RunColumns(GridQuery& query) const override;
  bool GetFromFloatArray(double step, double offset, const unsigned char* row, int column,
                         double& value) const;
  bool GetFromWORDArray(double step, double offset, const unsigned char* row, int column,
                        double& value) const;
};

}  // namespace zel_cs::geomath
