#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Natural cubic splines through 6 × 6 floats in single precision, first along each row, then across
/// the rows; rows from the south without padding. Within three nodes of an edge the base class's
/// 3 × 3 scheme serves instead, unless the grid covers the whole Earth: then columns wrap and rows
/// beyond a pole are read as mirrored ones. No node is taken for a hole by the spline.
///
/// Kept: in the half cell west of the first column of a global grid the interpolation fails, which
/// ends a query, and a grid that repeats its first column as its last is read a column off beside
/// it. CloseSeam makes a grid of which neither is true.
class GEOMATH_API RegGeoidInterpalation_GG2008SW : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  RegGeoidInterpalation_GG2008SW(const RegionalGeoidData& data);
  /// Constructed as RegionalGeoid is.
  RegGeoidInterpalation_GG2008SW(const TGridRgn& grid, int NX, int NY, const void* data,
                                 double DISMOD, const wchar_t* datumName,
                                 const wchar_t* interpolationType);

  /// As the base class, but a western longitude is reduced by a turn from 2π on and an eastern one
  /// from 4π on.
  TAbstractRect<double> GetBounds() const override;

  /// Returns 1 when the point's cell is outside the grid.
  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
  struct Source;
  bool BILIN_INTRP(int window, double lat, double lon, const Source& source, double& height) const;

  bool global_;
};

}  // namespace zel_cs::geomath
