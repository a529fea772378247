#pragma once

#include "geomath/base/grid_rgn.h"
#include "geomath/base/rect_rgn.h"
#include "geomath/export.h"
#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/regional_geoid_data.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

struct GridQuery;

/// Geoid heights from a regular latitude and longitude grid in the caller's memory. This class
/// interpolates biquadratically over the 3 × 3 nodes around the nearest one (parabolas, second
/// differences and row results in single precision); every other scheme is a subclass with its own
/// INTRP3. Rows of floats in metres, southernmost first, each from the west; a float of exactly
/// 20000 is a hole, and a stencil that touches one gives no height.
///
/// Angles are radians and heights metres; kNoHeight stands where there is no height. No query reads
/// outside the NX × NY nodes of the record, whatever its steps and extents are: a node outside is a
/// hole. Queries are const, store nothing and may run from many threads at once. A height has the
/// same bits whatever other points its call asks for and whatever instruction set it runs on; the
/// bilinear, biquadratic, convolution and Lagrange schemes over floats answer many points several
/// times faster than one by one.
class GEOMATH_API RegionalGeoid {
 public:
  /// The values of the record stay the caller's and must outlive the model and its copies.
  RegionalGeoid(const RegionalGeoidData& data);
  /// From the members of a record: value size 4, scale 1, no padding.
  RegionalGeoid(const TGridRgn& grid, int NX, int NY, const void* data, double DISMOD,
                const wchar_t* datumName, const wchar_t* interpolationType);
  /// Copies share the grid values and own their names.
  RegionalGeoid(const RegionalGeoid& other) = default;
  /// Copies share the grid values and own their names.
  RegionalGeoid& operator=(const RegionalGeoid& other) = default;
  virtual ~RegionalGeoid() = default;

  /// West, south, east, north of the outer nodes, degrees; a longitude of π or more is reduced by
  /// one turn first.
  virtual TAbstractRect<double> GetBounds() const;

 protected:
  /// Derives the row stride of the class's storage.
  virtual void InitData();

 public:
  /// One height at `point` (latitude, longitude) from the NX × NY nodes at `data`, `rowStride`
  /// bytes from row to row; positions are counted from this model's own grid. `region` is the
  /// region that the query allowed, half a step wider than the grid. Returns 0 on success, which
  /// includes a height of kNoHeight.
  virtual int INTRP3(const void* data, int rowStride, TGridRgn& region, int NY, int NX,
                     double* point, double& height) const;

  /// Members of the record.
  int GetNX() const { return data_.NX; }
  int GetNY() const { return data_.NY; }
  const void* GetData() const { return data_.data; }
  double GetDISMOD() const { return data_.DISMOD; }
  /// Six doubles: south, latitude extent, west, longitude extent, latitude step, longitude step.
  double* GetPasport() { return &data_.grid.B0; }
  const double* GetPasport() const { return &data_.grid.B0; }
  /// Always true.
  bool GetSteps(double& latStep, double& lonStep) const;
  /// The grid's region, or with `cellEdges` half a step more on every side.
  TRectRgn GetRegion(bool cellEdges) const;

  /// Heights of `count` points (latitude, longitude, height; the height is not used). A point
  /// counts as inside up to half a step beyond the outer nodes, also after a full turn of its
  /// longitude; its angles are first cut down to multiples of 1e-12 rad. A height of 999 m or more,
  /// of either sign, is none. Returns 0 when every point got a height, kAllOutside when every point
  /// lies outside (also when there is none), else kSomeWithoutHeight when one lies outside or got
  /// none, and kGeoidFailed without data or when the interpolation failed, which ends the query.
  /// Cutting down takes a position exactly on the southern or western edge off the nodes: most
  /// schemes then give no height (Kept; RegionalGeoidHeight takes it onto the edge).
  long CountHeight(const TAbstractPoint3<double>* points, double* heights, int count) const;

  /// The same with the slopes of the heights along latitude and longitude, metres per radian, in the
  /// stencil of each point. False, what is written of no use, unless every point got a height, and for
  /// schemes that are not run over columns.
  bool CountSlopes(const TAbstractPoint3<double>* points, double* heights, double* perLatitude,
                   double* perLongitude, int count) const;

  /// Copies the stored nodes nearest to those of `grid`, counted in the model's own steps: rows
  /// from the north to the south, each from the west; from the rounded position of grid's southern
  /// edge to that of its northern, and likewise in longitude, also after a full turn. Neither
  /// interpolates nor looks for holes (Kept), reads plain floats whatever the class stores (Kept),
  /// and gives kNoHeight where the model has no node. Steps that are 0 or not finite write nothing.
  /// True unless there is no data.
  bool CountHeightOnGrid(const TGridRgn& grid, double* heights, TSMatrix* accuracy) const;

 protected:
  RegionalGeoidData data_;  ///< as given
  int rowStride_ = 0;       ///< bytes from row to row

 private:
  /// Runs a query over columns of points, with the bits that INTRP3 gives one by one. Returns
  /// false, nothing done, when that is left to INTRP3: for a scheme without kernels, and for a
  /// host's own.
  virtual bool RunColumns(GridQuery& query) const;
  long REG_MOD(const TAbstractPoint3<double>* points, int count, double* heights) const;
  int REG_MODGrid(const TGridRgn& grid, double* heights) const;
};

}  // namespace zel_cs::geomath
