#pragma once

namespace geomath_files {

/// A place, degrees.
struct Position {
  double latitude;   ///< to the north
  double longitude;  ///< to the east
};

/// A box of latitudes and longitudes, degrees; `west` above `east` where it crosses the date line.
struct GeoBox {
  double west = -180;  ///< longitude of the western edge
  double south = -90;  ///< latitude of the southern edge
  double east = 180;   ///< longitude of the eastern edge
  double north = 90;   ///< latitude of the northern edge

  /// Whether a position, degrees, is inside or on the edge.
  bool Contains(double latitude, double longitude) const;
  /// Of the surface of a sphere of radius 1 with degrees of longitude; to compare boxes.
  double Surface() const;
  /// The part of this box's surface that the other one covers, 0 to 1.
  double CoveredBy(const GeoBox& other) const;
};

}  // namespace geomath_files
