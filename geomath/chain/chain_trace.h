#pragma once

#include <cstddef>

#include "geomath/base/ellipsoid.h"
#include "geomath/chain/coordinate_chain.h"

namespace zel_cs::geomath {

/// Hears of every step that a block of at most kBatchBlock points takes through a CoordinateChain
/// from global to local. Positions are latitude, longitude, height (radians, metres) or X, Y, Z, or
/// north, east, height, whatever the step works on; points that have failed stand as copies of one
/// that has not.
class ChainTrace {
 public:
  using Points = const double* const (&)[3];
  virtual ~ChainTrace() = default;

  /// Whether what follows the projection is to be told of its true positions; else those of the grid
  /// stand for all.
  virtual bool NeedsGrid() const = 0;
  /// The global positions, on axes north and east.
  virtual void Start(Points geographic, std::size_t count) = 0;
  /// The geographic positions that become geocentric, and those that geocentric ones became.
  virtual void ToGeocentric(const Ellipsoid& ellipsoid, Points geographic, std::size_t count) = 0;
  virtual void ToGeographic(const Ellipsoid& ellipsoid, Points geographic, std::size_t count) = 0;
  /// The geocentric positions behind the datum.
  virtual void Transform(const Datum& datum, Points local, std::size_t count) = 0;
  /// `place` is what the chain calls the step.
  virtual void Shift(const ChainShift& step, ChainStep place, Points before, Points after,
                     std::size_t count) = 0;
  /// The heights leave their positions: they are lowered by a geoid with these slopes, metres per
  /// radian, and by vertical shifts, which see the heights so far.
  virtual void LowerByGeoid(Points geographic, const double* perLatitude,
                            const double* perLongitude, std::size_t count) = 0;
  virtual void LowerByShift(const ChainShift& step, Points before, Points after,
                            std::size_t count) = 0;
  /// The positions stand on the local ellipsoid; their heights are replaced by lowered ones.
  virtual void Arrive(Points geographic, std::size_t count) = 0;
  /// Projects the positions, which may be the place of the grid coordinates; a point that fails gets NaN.
  /// Returns the number of the others.
  virtual std::size_t Project(const TGeoProj& projection, Points geographic, double* north,
                              double* east, std::size_t count) = 0;
  /// The grid coordinates that a site takes.
  virtual void ToSite(const LocalToGrid& site, Points grid, std::size_t count) = 0;
  virtual void ToGround(const GridToGround& ground, std::size_t count) = 0;
  /// After the last step of a chain without a projection.
  virtual void Finish(Points geographic, std::size_t count) = 0;
};

}  // namespace zel_cs::geomath
