#pragma once

#include "geomath/export.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// A constant added to each coordinate: a rotation of longitudes to another prime meridian, offsets
/// between geographic systems with and without height, between height systems, or a translation of
/// three parameters between geocentric ones.
class GEOMATH_API CoordinateOffset : public CoordinateShift {
 public:
  /// In the order and units of the space: target = source + offset.
  CoordinateOffset(ShiftSpace space, double first, double second, double third)
      : CoordinateShift(space), offset_{first, second, third} {}

  /// EPSG method 9601: longitudes that count from a meridian `longitude` (radians) east of the
  /// target's.
  static CoordinateOffset LongitudeRotation(double longitude) {
    return {ShiftSpace::geographic, 0, longitude, 0};
  }
  /// EPSG methods 9619, 9618 and 9660, radians and metres.
  static CoordinateOffset Geographic(double latitude, double longitude, double height = 0) {
    return {ShiftSpace::geographic, latitude, longitude, height};
  }
  /// EPSG method 9616, metres, for heights beside geographic or plane coordinates.
  static CoordinateOffset Vertical(double height, ShiftSpace space = ShiftSpace::geographic) {
    return {space, 0, 0, height};
  }
  /// EPSG method 1031, metres.
  static CoordinateOffset Geocentric(double x, double y, double z) {
    return {ShiftSpace::geocentric, x, y, z};
  }

 private:
  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void DifferentiateBlock(const double* const (&source)[3], const double* dates, std::size_t count,
                          double* const (&jacobian)[9], ShiftStatus* status) const override;

  double offset_[3];
};

}  // namespace zel_cs::geomath
