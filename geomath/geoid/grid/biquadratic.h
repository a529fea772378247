#pragma once

#include <cstddef>
#include <cstdint>

#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_stencil.h"
#include "geomath/geoid/grid/interpolants.h"

namespace zel_cs::geomath {

/// The biquadratic rule over the 3 × 3 floats around the nearest node, rows from the south, as
/// GridKernel runs it. The parabola along each row is kept in single precision. A node of exactly
/// 20000 is a hole.
struct Biquadratic {
  static constexpr int kSize = 3;
  GridFrame grid;

  /// u and v are the distances from the middle node, radians. Every point has a stencil.
  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const double fromSouth = lat - grid.south, fromWest = lon - grid.west;
    const double i = MiddleNode(fromSouth / grid.latStep, grid.rows);
    const double j = MiddleNode(fromWest / grid.lonStep, grid.columns);
    return {i - 1, j - 1, fromSouth - i * grid.latStep, fromWest - j * grid.lonStep, true};
  }

  GEOMATH_INLINE StencilSlopes PerRadian() const { return {1, 1}; }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[3][3], double) const {
    constexpr float kHole = static_cast<float>(kNoHeight);
    bool hole = false;
    float rows[3];
    for (int k = 0; k < 3; ++k) {
      hole |= (z[k][0] == kHole) | (z[k][1] == kHole) | (z[k][2] == kHole);
      rows[k] = static_cast<float>(ThreePoint(grid.lonStep, at.v, z[k][0], z[k][1], z[k][2]));
    }
    const double height = AcrossRows(at, rows);
    return hole ? kNoHeight : height;
  }

  /// The height from the three row values.
  GEOMATH_INLINE double AcrossRows(const Stencil& at, const float (&rows)[3]) const {
    return ThreePoint(grid.latStep, at.u, rows[0], rows[1], rows[2]);
  }

 private:
  /// The node nearest to position x, in steps, moved inwards from the first and the last.
  static GEOMATH_INLINE double MiddleNode(double x, double count) {
    const double nearest = RoundDown(x + 0.5), last = count - 2;
    const double inward = nearest < last ? nearest : last;
    return nearest >= 2 ? inward : 1;
  }
};

/// The parabola along a row of stored integers, metres times `scale`, in whole numbers; `hole` becomes
/// true where a node has the magnitude 32766 or more.
GEOMATH_INLINE double AlongRow(const std::int16_t (&z)[3], double step, double offset, double scale,
                               bool& hole) {
  constexpr int kHole = 32766;
  for (const int node : z) hole |= (node >= kHole) | (node <= -kHole);
  return ThreePoint(step, offset, z[0], z[1], z[2]) / scale;
}

/// The same in single precision; a node above 9990 m is a hole.
GEOMATH_INLINE double AlongRow(const std::int32_t (&z)[3], double step, double offset, double scale,
                               bool& hole) {
  constexpr double kHole = 9990.0;  // metres
  float metres[3];
  for (std::size_t k = 0; k < 3; ++k) {
    const double height = z[k] / scale;
    hole |= height > kHole;
    metres[k] = static_cast<float>(height);
  }
  return ThreePoint(step, offset, metres[0], metres[1], metres[2]);
}

/// The biquadratic rule over integers of 16 or 32 bits. A row value of exactly 20000 is a hole, too.
template <class Value>
struct BiquadraticOfIntegers {
  static constexpr int kSize = 3;
  using Node = Value;
  GridFrame grid;
  double scale;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    return Biquadratic{grid}.Place(lat, lon);
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return {1, 1}; }
  GEOMATH_INLINE double Height(const Stencil& at, const Value (&z)[3][3], double) const {
    bool hole = false;
    float rows[3];
    for (std::size_t k = 0; k < 3; ++k) {
      const double value = AlongRow(z[k], grid.lonStep, at.v, scale, hole);
      hole |= value == kNoHeight;
      rows[k] = static_cast<float>(value);
    }
    const double height = Biquadratic{grid}.AcrossRows(at, rows);
    return hole ? kNoHeight : height;
  }
};

}  // namespace zel_cs::geomath
