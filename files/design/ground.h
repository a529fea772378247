#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "geomath/design/zone_design.h"

namespace geomath_files {

/// Where the ground of a zone comes from.
struct GroundChoice {
  std::string heights;     ///< a raster, or a file of points with latitude, longitude and height
  std::string layer;       ///< of a file of points that has several
  std::string geoid;       ///< a geoid grid or a model (.gfc), where heights are above the sea
  std::string area;        ///< polygons that points must lie in
  std::string along;       ///< lines that they must lie near
  double corridor = 1000;  ///< metres to both sides of the lines
  std::string weights;     ///< a raster, or a column of the file of points
  std::string crs;  ///< geographic system of the positions; empty for the raster's, or WGS 84
};

/// Height points of a zone.
struct Ground {
  zel_cs::geomath::Ellipsoid ellipsoid;  ///< of the positions
  std::string crs;                       ///< their system: an EPSG code or WKT
  std::vector<double> b, l, h,
      weight;  ///< radians and metres above the ellipsoid; longitudes within half a turn of each other
  std::vector<std::string> notes;  ///< what the user should know
  std::vector<std::string> files;  ///< that were read

  /// All of them for a design.
  zel_cs::geomath::HeightPoints Points() const { return {b, l, h, weight}; }
};

/// Reads the ground: pixels of a raster in any system that GDAL knows, thinned to two million, or points;
/// inside of the area and the corridor. Holes are left out, and pixels in latitude and longitude weigh
/// what their area does. Throws UserError.
Ground ReadGround(const GroundChoice& choice);

}  // namespace geomath_files
