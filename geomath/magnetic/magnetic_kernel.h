#pragma once

#include <cstddef>

#include "geomath/magnetic/synthesis.h"

namespace zel_cs::geomath::magnetic {

/// What all points of one latitude and height share.
struct Row {
  struct Amplitudes {
    double x[4], y[4], z[4];
  };
  double degrees;  // of latitude
  GeodeticLatitude latitude;
  double sinPsi, cosPsi;
  int degree;
  double years;
  Amplitudes orders[kMaxMagneticDegree + 1];
};

/// The most points that go through the steps of a kernel together.
inline constexpr std::size_t kBlock = 64;

/// Degrees up to which latitudes and longitudes may go in a kernel; NaN may come, too.
inline constexpr double kMaxDegrees = 360;

/// The field over columns of 1 to kBlock points, in the units of MagneticField. The number of results
/// that are numbers is returned.
template <class Target>
struct MagneticKernel {
  static void PrepareRow(const Series& series, double latitude, double height, Row& row);
  static std::size_t AlongRow(const Row& row, const double* longitudes, std::size_t count,
                              MagneticPoint* results);
  static std::size_t Points(const Series& series, const double* latitudes, const double* longitudes,
                            const double* heights, std::size_t count, MagneticPoint* results);
};

}  // namespace zel_cs::geomath::magnetic
