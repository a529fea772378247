#pragma once

#include <cstddef>
#include <vector>

#include "geomath/base/ellipsoid.h"
#include "geomath/base/point_dates.h"
#include "geomath/chain/geoid_height.h"
#include "geomath/datum/datum.h"
#include "geomath/export.h"
#include "geomath/local/grid_to_ground.h"
#include "geomath/local/local_to_grid.h"
#include "geomath/proj/geo_proj.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

class ChainTrace;

/// The steps of a CoordinateChain that can refuse a point.
enum class ChainStep : unsigned char {
  none,             ///< no step failed: the point is converted
  input,            ///< a coordinate is not finite, or the latitude lies beyond the pole
  globalEllipsoid,  ///< geodetic and geocentric coordinates on the global ellipsoid
  datum,            ///< the seven-parameter transformation
  localEllipsoid,   ///< geodetic and geocentric coordinates on the datum's ellipsoid
  projection,       ///< the map projection; coming back, also a latitude beyond the pole
  geoid,            ///< the geoid height: no height at the position
  localization,     ///< the site calibration: not set up, or heights alone taken back
  ground,           ///< the ground system
  geographicShift,  ///< a shift of latitudes and longitudes
  geocentricShift,  ///< a shift of geocentric coordinates
  verticalShift,    ///< a shift of heights beside the geoid
  planeShift,       ///< a shift of grid coordinates
  missingDate,      ///< a change of frame or a motion: the point has no date
  modelYears,       ///< a change of frame or a motion: it is not defined at the date of the point
  frameChange,      ///< a change of the reference frame
  pointMotion,      ///< a motion with time: outside the velocity grid or the deformation model
};

/// The step in words for a report: "the datum", "the projection", …
GEOMATH_API const char* ChainStepName(ChainStep step);

/// What became of one point; true when it was converted.
struct ChainResult {
  ChainStep failedAt = ChainStep::none;  ///< the step that refused the point
  /// Whether the point was converted.
  explicit operator bool() const { return failedAt == ChainStep::none; }
};

/// To which ellipsoid the heights of a geoid belong.
enum class GeoidFrame : unsigned char {
  global,  ///< heights above the global ellipsoid, at positions on it (EGM96, national GNSS geoids)
  local,   ///< heights above the datum's ellipsoid, at positions on it
};

/// Where in a chain a shift stands, on the way from global to local.
enum class ShiftPlace : unsigned char {
  beforeDatum,  ///< geographic and geocentric shifts on the global side of the seven parameters,
                ///< changes of frame and motions
  afterDatum,   ///< those on the local side; without a datum the places are one
  heights,      ///< geographic shifts of which only the height counts: behind the geoid, at
                ///< positions of its frame (which SetGeoid states also without a geoid)
  afterProjection,  ///< plane shifts of north, east and height, in these axes
};

/// Which way a shift is run from global to local; the other way back.
enum class ShiftDirection : unsigned char {
  forward,  ///< its source system is on the global side
  inverse,  ///< its target system is
};

/// What becomes of a point that a shift does not reach.
enum class ShiftOutside : unsigned char {
  refuse,       ///< it fails, also where the shift has a fall-back
  extrapolate,  ///< it takes the fall-back of the shift, and fails without one
  unchanged,    ///< it stays as it is
};

/// A shift as a step of a chain.
struct ChainShift {
  const CoordinateShift* shift = nullptr;              ///< not owned
  ShiftDirection direction = ShiftDirection::forward;  ///< from global to local
  ShiftOutside outside = ShiftOutside::refuse;         ///< by the definition of the system
  /// The date, a decimal year, at which the shift is run whatever the date of the point: behind a
  /// motion to an epoch, positions are of that epoch. kNoDate takes the date of the point.
  double date = kNoDate;
};

/// A whole conversion as one object: global geodetic coordinates (B, L, H) to the local grid
/// (N, E, H) and back.
///
///     global B, L, H ─ global ellipsoid ─ datum ─ local ellipsoid ─ projection ─ N, E, H
///                                                                ─ site ─ ground ─ N, E, H
///
/// A geoid, when one is set, turns the ellipsoidal height H into a height above the geoid on the
/// way out and back into an ellipsoidal one on the way in.
///
/// Shifts stand between these steps (AddShift), any number in each place, run in the order in which
/// they were added. Around the datum, geodetic coordinates become geocentric and back where the next
/// step needs it: on the global ellipsoid before the datum and without one, on the datum's ellipsoid
/// behind it; a Datum without parameters changes the ellipsoid alone. Changes of frame and motions
/// (shifts of a ShiftKind other than timeless) stand there only, on either side.
///
/// They need the date of each point (NeedsDates). It is never assumed: a point without one fails at
/// ChainStep::missingDate. A chain without such steps does not look at dates.
///
/// The steps are pointers to objects of the host, which keeps them alive and unchanged while the
/// chain runs; a step that is null is left out:
/// - no datum: both systems share one ellipsoid, B, L and H reach the projection as given, and
///   the global ellipsoid is not used;
/// - no projection: the local pair is B, L on the local ellipsoid;
/// - no geoid: H is the height above the ellipsoid on both sides;
/// - no localization, no ground: the local triple is that of the grid.
/// A localization turns grid coordinates and heights (above the geoid, when there is one) into those
/// of the site; it uses its own parameters, but the chain's projection. A part that its mode leaves
/// out passes unchanged; heights alone cannot be taken back. A ground system comes last and leaves
/// heights alone; one that is disabled is left out.
///
/// A datum needs its ellipsoid and the global one, else that step fails.
///
/// Angles are radians, lengths metres. The global pair stands in the geographic axes of the
/// projection, the local pair in its grid axes (north and east unless they were set); the axes of
/// the datum are not looked at. All steps work on internal axes: whatever axes are set, a site and
/// a ground system move and turn northings and eastings, and the result is turned once, at the end.
/// Latitudes lie within ±π/2, longitudes may be any finite angle.
///
/// Every conversion is const, allocates nothing (a GlobalGeoidHeight does in the first call of a
/// thread), never throws and may run from many threads at once. A projection must have the const
/// form ForwardPoint/InversePoint, as all of the library have; one of a host that has none fails at
/// every point. Geodetic coordinates are found by the method of Ellipsoid::XYZ_to_BLH_Batch, which
/// is exact to rounding everywhere.
class GEOMATH_API CoordinateChain {
 public:
  /// No steps: coordinates come out as they went in.
  CoordinateChain() = default;
  /// The first three steps; null leaves one out. Nothing is owned.
  CoordinateChain(const Ellipsoid* global, const Datum* datum, const TGeoProj* projection)
      : global_(global), datum_(datum), projection_(projection) {}

  /// The steps; null is one that is left out. Not to be changed while another thread converts.
  const Ellipsoid* GetGlobalEllipsoid() const { return global_; }
  void SetGlobalEllipsoid(const Ellipsoid* global) { global_ = global; }
  const Datum* GetDatum() const { return datum_; }
  void SetDatum(const Datum* datum) { datum_ = datum; }
  const TGeoProj* GetProjection() const { return projection_; }
  void SetProjection(const TGeoProj* projection) { projection_ = projection; }
  const GeoidHeight* GetGeoid() const { return geoid_; }
  GeoidFrame GetGeoidFrame() const { return geoidFrame_; }
  void SetGeoid(const GeoidHeight* geoid, GeoidFrame frame = GeoidFrame::global) {
    geoid_ = geoid;
    geoidFrame_ = frame;
  }
  const LocalToGrid* GetLocalization() const { return localization_; }
  void SetLocalization(const LocalToGrid* localization) { localization_ = localization; }
  const GridToGround* GetGround() const { return ground_; }
  void SetGround(const GridToGround* ground) { ground_ = ground; }

  /// Puts a shift behind those in its place. False, nothing added, when it is null or of a space or
  /// kind that has no business there.
  bool AddShift(ShiftPlace place, const ChainShift& shift);
  /// The shifts in a place.
  const std::vector<ChainShift>& GetShifts(ShiftPlace place) const;
  /// Whether some step needs the date of the point.
  bool NeedsDates() const;

  /// In place, global (B, L, H) to local (N, E, H). On failure the arguments are unchanged.
  ChainResult ToLocal(double& b, double& l, double& h) const;
  /// In place, local (N, E, H) to global (B, L, H). On failure the arguments are unchanged.
  ChainResult ToGlobal(double& n, double& e, double& h) const;
  /// The same for a point at a date, a decimal year.
  ChainResult ToLocal(double& b, double& l, double& h, double date) const;
  ChainResult ToGlobal(double& n, double& e, double& h, double date) const;

  /// ToLocal of `count` points in place; the coordinates of point i stand at index i * stride of
  /// the three arrays (1 for three arrays, 3 for interleaved triples). A point that fails becomes
  /// NaN in all three slots. `failedAt`, when given, holds `count` entries (stride 1) and receives
  /// the step that failed, or ChainStep::none. Returns the number of points converted; each agrees
  /// with the single-point call within 1e-9 m, or 3 units in the last place where that is more, and
  /// 1e-15 rad.
  std::size_t ToLocalBatch(double* b, double* l, double* h, std::size_t count,
                           std::ptrdiff_t stride = 1, ChainStep* failedAt = nullptr) const;
  /// ToGlobal of `count` points, likewise.
  std::size_t ToGlobalBatch(double* n, double* e, double* h, std::size_t count,
                            std::ptrdiff_t stride = 1, ChainStep* failedAt = nullptr) const;
  /// The same for points at dates.
  std::size_t ToLocalDatedBatch(PointDates dates, double* b, double* l, double* h,
                                std::size_t count, std::ptrdiff_t stride = 1,
                                ChainStep* failedAt = nullptr) const;
  std::size_t ToGlobalDatedBatch(PointDates dates, double* n, double* e, double* h,
                                 std::size_t count, std::ptrdiff_t stride = 1,
                                 ChainStep* failedAt = nullptr) const;

 private:
  friend class ChainUncertainty;
  struct Block;
  class Frame;
  using BlockStep = void (CoordinateChain::*)(Block&) const;
  struct Way;

  void RunBlock(BlockStep steps, double* const (&columns)[3], PointDates dates, std::size_t count,
                ChainStep* failedAt, ChainTrace* trace = nullptr) const;
  void ToLocalBlock(Block& block) const;
  void ToGlobalBlock(Block& block) const;
  bool IsPlain() const;
  bool PlainToLocal(double& b, double& l, double& h) const;
  bool PlainToGlobal(double& n, double& e, double& h) const;
  static std::vector<ChainShift> CoordinateChain::*ListOf(ShiftPlace place);

  void DatumToLocal(Block& block) const;
  void DatumToGlobal(Block& block) const;
  bool MovesPositions() const { return datum_ || !beforeDatum_.empty() || !afterDatum_.empty(); }
  bool HasHeights() const { return geoid_ || !heights_.empty(); }
  void LowerHeights(Block& block, double* heights) const;
  void RaiseHeights(Block& block, double* heights) const;
  void ShiftPlane(Block& block, bool toLocal) const;
  void HeightToEllipsoid(Block& block) const;
  void GridToEllipsoid(Block& block) const;
  void LocalToGlobal(Block& block) const;
  bool HasKnownSteps(const ChainTrace& trace) const;
  void ToGlobalInJournal(Block& block, ChainTrace& trace) const;
  void TellWayBack(Block& block, ChainTrace& trace) const;
  template <class Convert>
  static std::size_t KeepUncalibrated(Block& block, unsigned char mode, Convert convert);
  void GlobalToGrid(Block& block) const;
  void GridToGlobal(Block& block) const;
  void GridToSite(Block& block, bool positions) const;
  void SiteToGrid(Block& block) const;
  ChainResult RunPoint(const Way& way, PointDates dates, double& x, double& y, double& h) const;
  std::size_t RunBatch(const Way& way, PointDates dates, double* x, double* y, double* h,
                       std::size_t count, std::ptrdiff_t stride, ChainStep* failedAt) const;

  const Ellipsoid* global_ = nullptr;
  const Datum* datum_ = nullptr;
  const TGeoProj* projection_ = nullptr;
  const GeoidHeight* geoid_ = nullptr;
  GeoidFrame geoidFrame_ = GeoidFrame::global;
  const LocalToGrid* localization_ = nullptr;
  const GridToGround* ground_ = nullptr;
  std::vector<ChainShift> beforeDatum_, afterDatum_, heights_, afterProjection_;
};

}  // namespace zel_cs::geomath
