#pragma once

#include <memory>

#include "geomath/export.h"
#include "geomath/geoid/ordinary_kriging.h"
#include "geomath/geoid/regional_geoid.h"

namespace zel_cs::geomath {

struct MirroredKriging;

/// Ordinary kriging (Matheron 1963; Cressie 1993, section 3.2) from 4 × 4 floats, rows from the
/// south, with the power variogram γ(h) = slope·h^1.5, h in steps of the grid (in either axis). Its
/// slope is that of the stencil itself, γ(1) = half the mean square difference of neighbouring
/// nodes; it scales the estimation variance and cancels in the height. Passes through every node
/// and reproduces constants; not continuous where the stencil changes.
///
/// The stencil is centred on the point's cell where the grid allows and moved inwards at its edges.
/// A node of 20000, or one outside the grid, is a hole. Edges are those of RegGeoid2x2SW: a point up
/// to half a cell north or east of the last nodes is extrapolated, one south or west of the first
/// gets no height.
class GEOMATH_API RegGeoidKrigingIntrp : public RegionalGeoid {
 public:
  /// Constructed as RegionalGeoid is.
  RegGeoidKrigingIntrp(const RegionalGeoidData& data);
  /// Constructed as RegionalGeoid is.
  RegGeoidKrigingIntrp(const TGridRgn& grid, int NX, int NY, const void* data, double DISMOD,
                       const wchar_t* datumName, const wchar_t* interpolationType);
  /// Copies share the grid values.
  RegGeoidKrigingIntrp(const RegGeoidKrigingIntrp& other);
  /// Copies share the grid values.
  RegGeoidKrigingIntrp& operator=(const RegGeoidKrigingIntrp& other);
  ~RegGeoidKrigingIntrp() override;

  int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX, double* point,
             double& height) const override;

  /// The variogram around a point (radians): its slope in m². False, argument untouched, where
  /// there is no height.
  bool Variogram(double lat, double lon, KrigingVariogram& variogram) const;
  /// The variance of the height at a point (radians), m²; 0 at a node. False, argument untouched,
  /// where there is no height.
  bool EstimationVariance(double lat, double lon, double& variance) const;

 private:
  struct NodesAround;
  bool FindNodes(double lat, double lon, NodesAround& around) const;
  bool RunColumns(GridQuery& query) const override;

  std::unique_ptr<const OrdinaryKriging> kriging_;
  std::unique_ptr<const MirroredKriging> mirrored_;  // the same, for heights
};

}  // namespace zel_cs::geomath
