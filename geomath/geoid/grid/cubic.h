#pragma once

#include <array>
#include <cstddef>

#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_stencil.h"
#include "geomath/geoid/grid/interpolants.h"

/// The cubic rules over 4 × 4 nodes, as GridKernel runs them. They differ in where they place the
/// stencil and in the weights. A node above 150 m is a hole.
namespace zel_cs::geomath {

/// `start` and the weighted sum of 4 × 4 nodes; kNoHeight when one of them is a hole.
template <class Node>
GEOMATH_INLINE double WeightedSum4x4(double start, const Weights4& rowWeights,
                                     const Weights4& columnWeights, const Node (&z)[4][4]) {
  constexpr double kHighestNode = 150.0;  // metres
  bool hole = false;
  double sum = start;
  for (std::size_t r = 0; r < 4; ++r) {
    for (std::size_t c = 0; c < 4; ++c) {
      hole |= z[r][c] > kHighestNode;
      sum += z[r][c] * rowWeights[r] * columnWeights[c];
    }
  }
  return hole ? kNoHeight : sum;
}

/// The slopes of that sum, from those of the weights.
template <class Node>
GEOMATH_INLINE StencilSlopes WeightedSlopes4x4(const Weights4& rowWeights,
                                               const Weights4& columnWeights,
                                               const Weights4& rowSlopes,
                                               const Weights4& columnSlopes,
                                               const Node (&z)[4][4]) {
  StencilSlopes slopes{0, 0};
  for (std::size_t r = 0; r < 4; ++r) {
    double along = 0, across = 0;
    for (std::size_t c = 0; c < 4; ++c) {
      along += columnWeights[c] * z[r][c];
      across += columnSlopes[c] * z[r][c];
    }
    slopes.u += rowSlopes[r] * along;
    slopes.v += rowWeights[r] * across;
  }
  return slopes;
}

/// The same of cubic convolution.
template <class Node>
GEOMATH_INLINE StencilSlopes ConvolutionSlopes(const Stencil& at, const Node (&z)[4][4]) {
  return WeightedSlopes4x4(CatmullRom(at.u), CatmullRom(at.v), CatmullRomSlopes(at.u),
                           CatmullRomSlopes(at.v), z);
}

/// The first node of a stencil that is placed by the node nearest to the point at `angle`: two
/// before that, or one when the point lies beyond it.
GEOMATH_INLINE double FirstByNearest(double nearest, double angle, double start, double step) {
  return nearest * step + start < angle ? nearest - 1 : nearest - 2;
}

/// Whether such a stencil counts: its nearest node must not be one of the first two of `count`, so
/// that no node of it lies before them, nor may one lie beyond the last.
GEOMATH_INLINE bool IsServed(double nearest, double first, double count) {
  return (nearest >= 2) & (first <= count - 4);
}

/// Cubic convolution, rows from the south, placed by the nearest node.
struct ConvolutionByNearest {
  static constexpr int kSize = 4;
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const double x = (lat - grid.south) / grid.latStep, y = (lon - grid.west) / grid.lonStep;
    const double i = RoundDown(x + 0.5), j = RoundDown(y + 0.5);
    const double row = FirstByNearest(i, lat, grid.south, grid.latStep);
    const double column = FirstByNearest(j, lon, grid.west, grid.lonStep);
    const bool rows = IsServed(i, row, grid.rows), columns = IsServed(j, column, grid.columns);
    const bool served = rows & columns;
    return {row, column, x - row - 1, y - column - 1, served};
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.StepsPerRadian(); }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[4][4], double) const {
    return WeightedSum4x4(0, CatmullRom(at.u), CatmullRom(at.v), z);
  }
  GEOMATH_INLINE StencilSlopes Slopes(const Stencil& at, const float (&z)[4][4]) const {
    return ConvolutionSlopes(at, z);
  }
};

/// Cubic convolution, rows from the south, around the point's cell; added to the slot.
struct ConvolutionByCell {
  static constexpr int kSize = 4;
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const double x = (lat - grid.south) / grid.latStep, y = (lon - grid.west) / grid.lonStep;
    const double i = RoundDown(x), j = RoundDown(y);
    return {i - 1, j - 1, x - i, y - j, grid.Holds(i - 1, j - 1, kSize)};
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.StepsPerRadian(); }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[4][4], double start) const {
    return WeightedSum4x4(start, CatmullRom(at.u), CatmullRom(at.v), z);
  }
  GEOMATH_INLINE StencilSlopes Slopes(const Stencil& at, const float (&z)[4][4]) const {
    return ConvolutionSlopes(at, z);
  }
};

/// Cubic convolution, rows from the north around the point's cell, columns placed by the nearest
/// node.
struct ConvolutionNorth {
  static constexpr int kSize = 4;
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const double x = (grid.north - lat) / grid.latStep, y = (lon - grid.west) / grid.lonStep;
    const double i = RoundDown(x + 0.5), j = RoundDown(y + 0.5);
    const double row = RoundDown(x) - 1;
    const double column = FirstByNearest(j, lon, grid.west, grid.lonStep);
    const bool rows = IsServed(i, row, grid.rows), columns = IsServed(j, column, grid.columns);
    const bool served = rows & columns;
    return {row, column, x - row - 1, y - column - 1, served};
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.SouthStepsPerRadian(); }
  template <class Node>
  GEOMATH_INLINE double Height(const Stencil& at, const Node (&z)[4][4], double) const {
    return WeightedSum4x4(0, CatmullRom(at.u), CatmullRom(at.v), z);
  }
  template <class Node>
  GEOMATH_INLINE StencilSlopes Slopes(const Stencil& at, const Node (&z)[4][4]) const {
    return ConvolutionSlopes(at, z);
  }
};

/// Lagrange's polynomial, rows from the south, through the nodes at their own coordinates.
struct LagrangeSouth {
  static constexpr int kSize = 4;
  GridFrame grid;

  /// u and v are the latitude and the longitude. The first row is the one before the point's cell,
  /// moved by one in the edge cells.
  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const double x = (lat - grid.south) / grid.latStep, y = (lon - grid.west) / grid.lonStep;
    const double before = CutToWhole(x) - 1;
    const double moved = before + (kSize - 1) >= grid.rows ? before - 1 : before;
    const double row = before < 0 ? before + 1 : moved;
    const double column = FirstByNearest(RoundDown(y + 0.5), lon, grid.west, grid.lonStep);
    return {row, column, lat, lon, grid.Holds(row, column, kSize)};
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return {1, 1}; }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[4][4], double) const {
    return WeightedSum4x4(0, Lagrange(at.u, Coordinates(at.row, grid.south, grid.latStep)),
                          Lagrange(at.v, Coordinates(at.column, grid.west, grid.lonStep)), z);
  }
  GEOMATH_INLINE StencilSlopes Slopes(const Stencil& at, const float (&z)[4][4]) const {
    const std::array<double, 4> rows = Coordinates(at.row, grid.south, grid.latStep);
    const std::array<double, 4> columns = Coordinates(at.column, grid.west, grid.lonStep);
    return WeightedSlopes4x4(Lagrange(at.u, rows), Lagrange(at.v, columns),
                             LagrangeSlopes(at.u, rows, grid.latStep),
                             LagrangeSlopes(at.v, columns, grid.lonStep), z);
  }

 private:
  static GEOMATH_INLINE std::array<double, 4> Coordinates(double first, double start, double step) {
    return {first * step + start, (first + 1) * step + start, (first + 2) * step + start,
            (first + 3) * step + start};
  }
};

}  // namespace zel_cs::geomath
