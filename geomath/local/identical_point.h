#pragma once

#include <cstdint>

namespace zel_cs::geomath {

/// Bits of a component word: which coordinates of a point are present.
inline constexpr std::uint32_t kHasNorth = 0x4;
inline constexpr std::uint32_t kHasEast = 0x8;
inline constexpr std::uint32_t kHasHeight = 0x10;

/// What a control point is used for in a site calibration.
enum PointUse : std::int32_t {
  PointUseNone = 0,
  PointUseVertical = 1,
  PointUseHorizontal = 2,
  PointUseBoth = 3,
  PointUseRotation = 4,
};

/// A position or a direction in a plane.
struct PlaneVector {
  double n = 0;  ///< northing
  double e = 0;  ///< easting
};

/// One control point of a site calibration, in the global and in the local system. A plain record
/// of the caller; TLocalizationParam changes it in place. Metres, or radians where stated.
struct IdenticalPoint {
  IdenticalPoint() : scaleHeight(0), use(PointUseNone), globalFlags(0), localFlags(0) {}

  double globalN;             ///< grid northing of the base projection; or latitude, radians
  double globalE;             ///< grid easting of the base projection; or longitude, radians
  double globalH;             ///< height in the global system
  double scaleHeight;         ///< height of the scale that one point alone gives
  double localN;              ///< northing in the local system
  double localE;              ///< easting in the local system
  double localH;              ///< height in the local system
  double residualN;           ///< local minus computed; DBL_MAX where not computed
  double residualE;           ///< likewise
  double residualH;           ///< likewise
  std::int32_t use;           ///< a PointUse
  std::uint32_t globalFlags;  ///< which global components are present
  std::uint32_t localFlags;   ///< which local components are present
};

}  // namespace zel_cs::geomath
