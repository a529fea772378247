#pragma once

#include <cstddef>

#include "geomath/export.h"

namespace zel_cs::geomath {

/// What a CoordinateChain asks of a geoid: the height of the geoid above the ellipsoid at a
/// position. Implementations keep no state of the last point: every call is const and must be
/// safe from many threads at once.
class GEOMATH_API GeoidHeight {
 public:
  virtual ~GeoidHeight();

  /// Geoid height at latitude `b`, longitude `l` (radians, north and east positive), metres.
  /// False when there is none there: outside the model, or a hole in it.
  virtual bool Height(double b, double l, double& height) const = 0;

  /// Height at `count` positions; NaN where there is none. A model that gains from seeing many
  /// positions at once overrides it.
  virtual void Heights(const double* b, const double* l, double* heights, std::size_t count) const;

  /// The same with the slopes along latitude and longitude, metres per radian, NaN where there is none.
  /// The base takes symmetric differences over 13 m, at an edge beside the point.
  virtual void HeightsAndSlopes(const double* b, const double* l, double* heights,
                                double* perLatitude, double* perLongitude, std::size_t count) const;
};

}  // namespace zel_cs::geomath
