#pragma once

#include <memory>

#include "geomath/export.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// The projections that low-distortion zones are made of.
enum class ZoneFamily : unsigned char {
  transverseMercator,  ///< TUTMProj: the scale grows east and west of a meridian
  lambert,             ///< TLCProj with one parallel: it grows north and south of it
  obliqueMercator,     ///< TSPC_OM83Proj: it grows to both sides of a line in any direction
  stereographic,       ///< TDoubleSter: it grows around a point
};

/// A zone as it is published: radians and metres.
struct GEOMATH_API ZoneDefinition {
  ZoneFamily family = ZoneFamily::transverseMercator;  ///< its projection
  double lat0 = 0;     ///< latitude of the origin: the parallel of a Lambert zone
  double lon0 = 0;     ///< longitude of the origin: the meridian of a transverse Mercator zone
  double azimuth = 0;  ///< of the central line of an oblique Mercator zone there; 0 in the others
  double scale = 1;    ///< on the axis, or at the point of a stereographic zone
  double fNorth = 0;   ///< false northing
  /// False easting. In an oblique Mercator zone the two belong to the natural origin, where the
  /// central line crosses the equator of the aposphere (EPSG method 9812).
  double fEast = 0;

  /// The projection on an ellipsoid.
  std::unique_ptr<TGeoProj> Projection(const Ellipsoid& ellipsoid) const;
};

}  // namespace zel_cs::geomath
