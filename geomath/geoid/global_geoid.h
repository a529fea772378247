#pragma once

#include <cstddef>
#include <vector>

#include "geomath/base/grid_rgn.h"
#include "geomath/base/rect_rgn.h"
#include "geomath/export.h"
#include "geomath/geoid/geoid_status.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

struct HarmonicSeries;

/// The GM, m³/s², and with kWgs84A the radius that the coefficients of a model belong to: WGS84.
inline constexpr double kModelGM = 3.986004418e14;

/// A spherical-harmonic model as its reader hands it over. The coefficient arrays are fully
/// normalised, in triangular order (degree n, order m at n·(n + 1)/2 + m), not owned, and must
/// outlive every model made of the record.
struct GEOMATH_API GlobalGeoidData {
  const double* correctionC = nullptr;  ///< height anomaly to undulation, cosines, cm; may be null
  const double* correctionS = nullptr;  ///< the sines of that correction, cm; may be null
  const double* C = nullptr;            ///< potential, cosines, less those of the normal field
  const double* S = nullptr;            ///< potential, sines
  int count = 0;                        ///< degrees held: the maximum degree plus 1
  bool flag = false;                    ///< carried along unread
  double value = 0;                     ///< carried along unread

  GlobalGeoidData() = default;
  /// The members, the count first.
  GlobalGeoidData(int degrees, const double* cosines, const double* sines, bool carriedFlag,
                  double carriedValue, const double* correctionCosines,
                  const double* correctionSines);
};

/// Work arrays for the queries of one thread; may serve several models in turn. The first query of
/// a model that needs more room than it has allocates. Without memory the queries fail as those
/// calls say.
class GEOMATH_API GlobalGeoidScratch {
 public:
  GlobalGeoidScratch() = default;

 private:
  friend class GlobalGeoid;
  std::vector<double> space_;
};

/// Geoid undulations from a spherical-harmonic model of the gravity potential, by the harmonic
/// synthesis of EGM96 (Lemoine et al. 1998, NASA/TP-1998-206861; its point program F477):
/// Somigliana's normal gravity and GM of WGS84, zero-degree term −0.53 m, degrees from 2. The
/// coefficients are used as given; the even zonal terms of a reference ellipsoid must already have
/// been subtracted.
///
/// Angles are radians and heights metres. Degrees up to about 1900 are safe from underflow of the
/// Legendre functions (Holmes and Featherstone 2002). Any latitude and longitude is taken as given;
/// one that is not finite gives NaN. Results agree with a term by term evaluation within 1e-9 m.
///
/// The Legendre functions and the sums over the degrees depend on the latitude alone. They are
/// evaluated once for each run of points on one latitude and once for each row of a grid, for up to
/// 16 latitudes together, so that the coefficients are read once for all of these; a longitude then
/// costs as many steps as the model has orders. A height has the same bits whatever other points
/// its call asks for and whatever instruction set it runs on.
///
/// The calls without a scratch share the object's own work arrays, so that one object must not run
/// them from two threads at once; those with a scratch may run from many threads, one scratch each.
/// Construction and copying allocate the tables of the recursion and these work arrays; a query
/// then allocates nothing, unless its scratch has to grow.
class GEOMATH_API GlobalGeoid {
 public:
  /// The arrays of the record must outlive the model and its copies.
  GlobalGeoid(const GlobalGeoidData& data);
  /// The same from the members of a record.
  GlobalGeoid(int count, const double* C, const double* S, bool flag, double value,
              const double* correctionC, const double* correctionS);

  /// Undulations of `n` points (latitude, longitude, height; the height is not used). Returns 0, or
  /// 1 when the model is empty (no heights are written then). A point that cannot be computed, for
  /// want of coefficients or memory, gets kNoHeight. The matrix is not used.
  long CountHeight(const TAbstractPoint3<double>* points, double* heights, int n,
                   TSMatrix* accuracy) const;
  long CountHeight(const TAbstractPoint3<double>* points, double* heights, int n,
                   GlobalGeoidScratch& scratch) const;

  /// Undulations at the GetLatDim() × GetLonDim() nodes of `grid`, row after row from the south,
  /// each from the west. Always true. The matrix is not used.
  bool CountHeightOnGrid(const TGridRgn& grid, double* heights, TSMatrix* accuracy) const;
  bool CountHeightOnGrid(const TGridRgn& grid, double* heights, GlobalGeoidScratch& scratch) const;

  /// The whole Earth: −180, −90, 180, 90 degrees (west, south, east, north).
  TAbstractRect<double> GetBounds() const;
  /// The whole Earth in radians, whatever the argument.
  TRectRgn GetRegion(bool cellEdges) const;
  /// False, arguments untouched: a harmonic model has no steps.
  bool GetSteps(double& latStep, double& lonStep) const;

 private:
  void Init();
  HarmonicSeries Series() const;
  bool Prepared(GlobalGeoidScratch& scratch) const;

  GlobalGeoidData data_;
  std::vector<double> tables_;  // factors of the Legendre recursion
  mutable GlobalGeoidScratch own_;
};

}  // namespace zel_cs::geomath
