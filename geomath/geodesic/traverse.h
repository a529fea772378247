#pragma once

#include <optional>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/export.h"
#include "geomath/geodesic/grid_line.h"

namespace zel_cs::geomath {

/// What the distances of a traverse are.
enum class TraverseDistance : unsigned char {
  slope,     ///< straight in space between the stations' marks
  ground,    ///< horizontal, at the mean height of its two stations
  geodesic,  ///< on the ellipsoid
  grid       ///< in the grid, scale and height already applied
};

/// How a traverse with a known end is adjusted.
enum class TraverseAdjustment : unsigned char {
  none,         ///< as measured
  bowditch,     ///< angles in equal parts, then positions by the length up to them (Bowditch 1808)
  leastSquares  ///< by conditions between the observations (Mikhail 1976, chapter 8)
};

/// One station's observations.
struct TraverseLeg {
  double angle;       ///< at the station, clockwise from the one before to the next, radians
  double distance;    ///< to the next station, metres
  double height = 0;  ///< of the next station, as GridPoint::h
};

/// A traverse as it comes from the field. Azimuths are geodetic, radians; GridLines::AzimuthTo and
/// AzimuthOfBearing give them from known marks and grid bearings.
struct TraverseField {
  GridPoint start = {0, 0, 0};         ///< the first station
  double startAzimuth = 0;             ///< of the mark that the first angle is turned from
  std::vector<TraverseLeg> legs = {};  ///< in order
  std::optional<GridPoint> end = {};   ///< known position of the last station
  /// Known azimuth from the last station to a closing mark, and the angle there, clockwise from the
  /// station before to the mark. Used when both are given.
  std::optional<double> endAzimuth = {}, endAngle = {};

  TraverseDistance kind = TraverseDistance::ground;  ///< what the distances are
  /// Angles were turned about the plumb line: every sight between stations is reduced by the slopes of
  /// the geoid, which the lines must have. Marks that azimuths are given of are taken as level sights.
  bool deflections = false;
  /// Standard deviations for least squares: of an angle, radians; of a distance, metres, and what it
  /// grows by, metres per metre.
  double sigmaAngle = 5 * kRadPerArcSecond, sigmaDistance = 0.002, sigmaPerMetre = 2e-6;
};

/// A computed traverse. Metres and radians.
struct TraverseResult {
  std::vector<GridPoint> stations;  ///< the start and the end of every leg, adjusted
  double length = 0;                ///< of its legs in the grid, as measured
  /// Computed minus known at the end, before any adjustment: NaN where the end is not known.
  double misclosureN = 0, misclosureE = 0;
  double misclosureAngle = 0;     ///< of the closing azimuth, before any adjustment; NaN likewise
  double relativeMisclosure = 0;  ///< misclosure of position over length; NaN likewise
  /// What the adjustment adds to the observations: an angle for each leg (and one for the closing
  /// angle), a distance for each leg. Bowditch corrects positions instead of distances: 0 there.
  std::vector<double> angleCorrections, distanceCorrections;
  /// Standard deviation of unit weight after least squares, without unit; NaN otherwise.
  double sigma0 = 0;
};

/// Computes traverses on the ellipsoid: every leg is a geodesic, its field angle is turned from the
/// geodesic to the station before, and stations become grid positions at the end. No arc-to-chord
/// correction and no scale factor is needed or left out; every class of projection serves, legs may
/// be of any length. Distances of every kind are solved for the geodesic that has them.
///
/// Const; computing allocates the result and nothing else.
class GEOMATH_API Traverse {
 public:
  /// In the grid and with the heights of `lines`, which the caller keeps.
  explicit Traverse(const GridLines& lines) : lines_(&lines) {}

  /// False where a station has no position in the grid, a distance cannot be (shorter than the
  /// difference of heights, negative, not finite), or an adjustment is asked for without a known end
  /// or without legs. The result then holds nothing of use.
  bool Compute(const TraverseField& field, TraverseAdjustment adjustment,
               TraverseResult& result) const;

 private:
  struct Path;
  bool Walk(const TraverseField& field, const std::vector<double>& angles,
            const std::vector<double>& distances, Path& path) const;
  bool Leg(const GridPoint& from, double azimuth, double distance, TraverseDistance kind,
           GridPoint& to, double& backAzimuth) const;
  bool Bowditch(const TraverseField& field, Path& path, TraverseResult& result) const;
  bool LeastSquares(const TraverseField& field, Path& path, TraverseResult& result) const;

  const GridLines* lines_;
};

}  // namespace zel_cs::geomath
