#pragma once

#include "geomath/shift/grid/part_frame.h"
#include "geomath/simd/kernel.h"

/// The rules of interpolation of shift grids. A rule places a window of kSize × kSize nodes and
/// interpolates one component in it; u counts to the north, v to the east, from its first node.
namespace zel_cs::geomath {

/// The node that a window starts at on an axis, a whole number, and the position counted from it.
struct AxisWindow {
  double first, fraction;
};

/// The bilinear surface of a cell. A point on a line of nodes takes the cell north or east of it,
/// the last line that before it.
struct BilinearShift {
  static constexpr int kSize = 2;

  static GEOMATH_INLINE AxisWindow Place(double x, double count) {
    const double first = IntoAxis(RoundDown(x), count - 2);
    return {first, x - first};
  }

  template <class Value>
  static GEOMATH_INLINE double At(const Value (&z)[2][2], double u, double v) {
    double alongNorth, alongEast, twist;
    return At(z, u, v, alongNorth, alongEast, twist);
  }

  /// The value, its slopes per step, and its mixed derivative, which is the same in all of the cell.
  template <class Value>
  static GEOMATH_INLINE double At(const Value (&z)[2][2], double u, double v, double& alongNorth,
                                  double& alongEast, double& twist) {
    const double southWest = z[0][0], southEast = z[0][1];
    const double onWest = z[1][0] - southWest, onEast = z[1][1] - southEast;
    const double west = southWest + onWest * u, east = southEast + onEast * u;
    twist = onEast - onWest;
    alongNorth = onWest + twist * v;
    alongEast = east - west;
    return west + alongEast * v;
  }

  template <class Value>
  static GEOMATH_INLINE double At(const Value (&z)[2][2], double u, double v, double& alongNorth,
                                  double& alongEast) {
    double twist;
    return At(z, u, v, alongNorth, alongEast, twist);
  }
};

/// The biquadratic rule of NADCON 5 (Smith and Bilich 2019, NOAA Technical Memorandum NOS NGS 84):
/// parabolas through three nodes of each of three rows, and one across. The window starts one node
/// before the cell in the cell's first half. Where it jumps, in the middle between nodes, the surface
/// has a small step.
struct BiquadraticShift {
  static constexpr int kSize = 3;

  static GEOMATH_INLINE AxisWindow Place(double x, double count) {
    const double cell = IntoAxis(RoundDown(x), count - 2);
    const bool firstHalf = (x - cell <= 0.5) & (cell > 0), atEnd = cell > count - 3;
    const double first = (firstHalf | atEnd) ? cell - 1 : cell;
    return {first, x - first};
  }

  template <class Value>
  static GEOMATH_INLINE double At(const Value (&z)[3][3], double u, double v) {
    double alongNorth, alongEast;
    return At(z, u, v, alongNorth, alongEast);
  }

  /// The value, and its slopes per step.
  template <class Value>
  static GEOMATH_INLINE double At(const Value (&z)[3][3], double u, double v, double& alongNorth,
                                  double& alongEast) {
    double row[3], slope[3];
    for (int r = 0; r < 3; ++r) {
      row[r] = Parabola(v, z[r][0], z[r][1], z[r][2]);
      slope[r] = ParabolaSlope(v, z[r][0], z[r][1], z[r][2]);
    }
    alongNorth = ParabolaSlope(u, row[0], row[1], row[2]);
    alongEast = Parabola(u, slope[0], slope[1], slope[2]);
    return Parabola(u, row[0], row[1], row[2]);
  }

 private:
  static GEOMATH_INLINE double ParabolaSlope(double x, double f0, double f1, double f2) {
    return f1 - f0 + (x - 0.5) * (f2 - 2 * f1 + f0);
  }
  // Through f0, f1, f2 at 0, 1, 2: Newton's forward differences.
  static GEOMATH_INLINE double Parabola(double x, double f0, double f1, double f2) {
    return f0 + x * (f1 - f0) + x * (x - 1) / 2 * (f2 - 2 * f1 + f0);
  }
};

}  // namespace zel_cs::geomath
