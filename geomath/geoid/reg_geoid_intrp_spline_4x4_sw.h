#pragma once

#include "geomath/export.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

/// Bicubic spline over 4 × 4 floats, rows from the south: the tensor product of the natural cubic
/// splines through four nodes in each axis (de Boor 1978, A Practical Guide to Splines, chapters IV
/// and XVII). It passes through every node, reproduces bilinear surfaces, and is continuous across
/// cells. The stencil is centred on the point's cell where the grid allows and moved inwards at its
/// edges, so that every cell of a grid of at least 4 × 4 nodes is served.
///
/// A node above 500 m is a hole. Edges are those of RegGeoid2x2SW: a point up to half a cell north
/// or east of the last nodes is extrapolated, one south or west of the first gets no height.
class GEOMATH_API RegGeoidIntrp_Spline4x4SW : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  using RegionalGeoid::RegionalGeoid;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

 private:
  bool RunColumns(GridQuery& query) const override;
  static bool Init_Coeff(double* coeff, const int* index, const void* data);
};

}  // namespace zel_cs::geomath
