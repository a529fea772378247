#pragma once

#include "geomath/export.h"
#include "geomath/platform/zel_memory.h"
#include "geomath/proj/table_proj_bounds.h"

namespace zel_cs::geomath {

class TGeoProj;

/// The mathematics of a table projection, supplied by its loader: converts with two float grids of
/// northings and easting values and, when it needs one, a projection. Holds pointers to all three
/// and owns none. What the grid sizes and the bounds mean is each loader's own.
class GEOMATH_API TTableProjMath : public OnHostHeap {
 public:
  /// No grids, no projection, sizes 0.
  TTableProjMath();
  /// The grids, their sizes and the projection stay the caller's; each pointer may be null.
  TTableProjMath(float* dataN, float* dataE, int firstSize, int secondSize, TGeoProj* proj);
  /// Copies share the grids and the projection.
  TTableProjMath(const TTableProjMath&);
  /// Copies share the grids and the projection.
  TTableProjMath& operator=(const TTableProjMath&);
  virtual ~TTableProjMath();

  /// In place, latitude and longitude (radians) to northing and easting (metres); false on failure.
  virtual bool Forward(double& b, double& l) = 0;
  /// In place, northing and easting to latitude and longitude; false on failure.
  virtual bool Inverse(double& n, double& e) = 0;

  /// The grids and the projection, not owned; null where there is none.
  TGeoProj* GetGeoProj() const { return proj_; }
  void SetGeoProj(TGeoProj* proj) { proj_ = proj; }
  float* GetDataN() const { return dataN_; }
  void SetDataN(float* data) { dataN_ = data; }
  float* GetDataE() const { return dataE_; }
  void SetDataE(float* data) { dataE_ = data; }

  /// The grid sizes in the order of the constructor.
  int FirstSize() const { return firstSize_; }
  int SecondSize() const { return secondSize_; }

  /// Where the geographic and the grid coordinates of the table lie; zero until a loader sets them.
  TTableProjBounds& AngleBounds() { return angleBounds_; }
  const TTableProjBounds& AngleBounds() const { return angleBounds_; }
  TTableProjBounds& GridBounds() { return gridBounds_; }
  const TTableProjBounds& GridBounds() const { return gridBounds_; }

 private:
  TGeoProj* proj_ = nullptr;
  float* dataN_ = nullptr;
  float* dataE_ = nullptr;
  int secondSize_ = 0;
  int firstSize_ = 0;
  TTableProjBounds angleBounds_;
  TTableProjBounds gridBounds_;
};

}  // namespace zel_cs::geomath
