#pragma once

#include <array>
#include <cstddef>

#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_stencil.h"
#include "geomath/geoid/grid/interpolants.h"

/// The rules of natural cubic splines, rows from the south, as GridKernel runs them.
namespace zel_cs::geomath {

/// Coefficients of u^k·v^l of a bicubic polynomial, at [4·k + l].
using Bicubic = std::array<double, 16>;

/// The spline through 4 × 4 nodes on the cell that lies `rowPiece` and `columnPiece` cells from the
/// first: splines along the rows, then one through the coefficients of each power.
template <class Node>
GEOMATH_INLINE Bicubic SplineOnCell(const Node (&z)[4][4], double rowPiece, double columnPiece) {
  std::array<std::array<double, 4>, 4> alongRows;  // of each row, the coefficients of v^l
  for (std::size_t r = 0; r < 4; ++r)
    alongRows[r] = NaturalSplinePiece({z[r][0], z[r][1], z[r][2], z[r][3]}, columnPiece);
  Bicubic a;
  for (std::size_t l = 0; l < 4; ++l) {
    const std::array<double, 4> powers = NaturalSplinePiece(
        {alongRows[0][l], alongRows[1][l], alongRows[2][l], alongRows[3][l]}, rowPiece);
    for (std::size_t k = 0; k < 4; ++k) a[4 * k + l] = powers[k];
  }
  return a;
}

GEOMATH_INLINE double Evaluate(const Bicubic& a, double u, double v) {
  const auto alongRow = [&](std::size_t k) {
    return ((a[4 * k + 3] * v + a[4 * k + 2]) * v + a[4 * k + 1]) * v + a[4 * k];
  };
  return ((alongRow(3) * u + alongRow(2)) * u + alongRow(1)) * u + alongRow(0);
}

/// Its slopes by u and v.
GEOMATH_INLINE StencilSlopes SlopesOf(const Bicubic& a, double u, double v) {
  const auto alongRow = [&](std::size_t k) {
    return ((a[4 * k + 3] * v + a[4 * k + 2]) * v + a[4 * k + 1]) * v + a[4 * k];
  };
  const auto slopeAlongRow = [&](std::size_t k) {
    return (3 * a[4 * k + 3] * v + 2 * a[4 * k + 2]) * v + a[4 * k + 1];
  };
  return {
      (3 * alongRow(3) * u + 2 * alongRow(2)) * u + alongRow(1),
      ((slopeAlongRow(3) * u + slopeAlongRow(2)) * u + slopeAlongRow(1)) * u + slopeAlongRow(0)};
}

/// The spline through 4 × 4 nodes around the point's cell. A node above 500 m is a hole.
struct Spline4x4 {
  static constexpr int kSize = 4;
  static constexpr double kHighestNode = 500.0;  // metres
  GridFrame grid;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    return PlaceInwards(grid, lat, lon);
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.StepsPerRadian(); }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[4][4], double) const {
    bool hole = false;
    for (const auto& row : z)
      for (const float node : row) hole |= node > kHighestNode;
    const double i = Piece(at.u), j = Piece(at.v);
    const double height = Evaluate(SplineOnCell(z, i, j), at.u - i, at.v - j);
    return hole ? kNoHeight : height;
  }
  GEOMATH_INLINE StencilSlopes Slopes(const Stencil& at, const float (&z)[4][4]) const {
    const double i = Piece(at.u), j = Piece(at.v);
    return SlopesOf(SplineOnCell(z, i, j), at.u - i, at.v - j);
  }

 private:
  /// Points beyond the last node belong to the last piece.
  static GEOMATH_INLINE double Piece(double position) {
    return position < 1 ? 0.0 : position < 2 ? 1.0 : 2.0;
  }
};

/// The splines of six values in single precision, along rows and then across them, where the stencil
/// is whole: from the third row and column on, or from the fourth where another rule serves the edge.
struct Spline6x6 {
  static constexpr int kSize = 6;
  GridFrame grid;
  double first;  // row and column of the first cells that are served

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    const double x = (lat - grid.south) / grid.latStep, y = (lon - grid.west) / grid.lonStep;
    const double i = RoundDown(x), j = RoundDown(y);
    const bool rows = Between(i, first, grid.rows - 4),
               columns = Between(j, first, grid.columns - 4);
    const bool inside = rows & columns;
    return {i - kBefore, j - kBefore, x - (i - kBefore), y - (j - kBefore), inside};
  }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&z)[6][6], double) const {
    const float u = static_cast<float>(at.u - kBefore), v = static_cast<float>(at.v - kBefore);
    std::array<float, kSplineNodes> acrossRows;
    for (std::size_t r = 0; r < kSplineNodes; ++r)
      acrossRows[r] = NaturalSpline6({z[r][0], z[r][1], z[r][2], z[r][3], z[r][4], z[r][5]},
                                     std::size_t{kBefore}, v);
    return NaturalSpline6(acrossRows, std::size_t{kBefore}, u);
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.StepsPerRadian(); }
  /// Those of the splines themselves, which the heights round to single precision.
  GEOMATH_INLINE StencilSlopes Slopes(const Stencil& at, const float (&z)[6][6]) const {
    const double u = at.u - kBefore, v = at.v - kBefore;
    std::array<double, kSplineNodes> values, slopes;
    for (std::size_t r = 0; r < kSplineNodes; ++r) {
      const Cubic piece =
          NaturalSpline6MiddlePiece({z[r][0], z[r][1], z[r][2], z[r][3], z[r][4], z[r][5]});
      values[r] = piece.At(v);
      slopes[r] = piece.SlopeAt(v);
    }
    return {NaturalSpline6MiddlePiece(values).SlopeAt(u), NaturalSpline6MiddlePiece(slopes).At(u)};
  }

 private:
  static constexpr int kBefore = 2;  // nodes before the one south or west of the point
};

}  // namespace zel_cs::geomath
