#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Lagrange's cubic polynomial in each axis through 4 × 4 floats at their true coordinates, rows from
/// the south without padding. Rows are those around the point's cell, moved by one towards the
/// middle in the first and the last row of cells; columns those around the cell. A node above
/// 150 m is a hole, and so is one outside the grid: a point in the half cell south of the first row
/// is extrapolated, one on or north of the last row or within a cell of the other two edges gets no
/// height.
class GEOMATH_API RegGeoidIntrp_Lagrange4x4SW : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
};

}  // namespace zel_cs::geomath
