#pragma once

namespace geomath_files {

/// A box of latitudes and longitudes, degrees; `west` above `east` where it crosses the date line.
struct GeoBox {
  double west = -180, south = -90, east = 180, north = 90;

  bool Contains(double latitude, double longitude) const;
  /// Of the surface of a sphere of radius 1 with degrees of longitude; to compare boxes.
  double Surface() const;
  /// The part of this box's surface that the other one covers, 0 to 1.
  double CoveredBy(const GeoBox& other) const;
};

}  // namespace geomath_files
