#pragma once

#include <optional>

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"
#include "geomath/proj/methods/utm_proj.h"

namespace zel_cs::geomath {

/// A polynomial in the coordinates of a transverse Mercator, northing x and easting y, read from a
/// block of 22 floats instead of grid nodes:
///
///     0 … 6     the projection: semi-major axis, inverse flattening, central meridian, scale,
///               latitude of origin, false easting, false northing (metres, radians)
///     7         not used
///     8, 9      bounds of x, metres         10, 11    bounds of y, metres
///     12, 13    centre and unit of x        14, 15    centre and unit of y
///     16 … 21   coefficients of 1, w, u, w², u² and w⁶·u (the sixth power is meant), with
///               u = (x − c12)/c13 and w = (y − c14)/c15
///
/// The block must hold 22 floats. There are no nodes: CountHeightOnGrid gives kNoHeight. No height
/// outside the bounds, which belong to the domain, or without a block. INTRP3 always returns 0.
class GEOMATH_API RegGeoidPolinomialSingapore : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  RegGeoidPolinomialSingapore(const RegionalGeoidData& data);
  /// Constructed as RegionalGeoid is.
  RegGeoidPolinomialSingapore(const TGridRgn& grid, int NX, int NY, const void* data, double DISMOD,
                              const wchar_t* datumName, const wchar_t* interpolationType);

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
  using RegionalGeoid::InitData;
  void InitData(const void* coefficients);

  std::optional<TUTMProj> projection_;
};

}  // namespace zel_cs::geomath
