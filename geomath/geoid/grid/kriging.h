#pragma once

#include <cmath>
#include <cstddef>

#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_stencil.h"
#include "geomath/geoid/ordinary_kriging.h"

namespace zel_cs::geomath {

/// Puts 4 × 4 numbers at nodes into sums and differences of those that mirror each other, along rows
/// and along columns: the sum of the outer pair, of the inner pair, and their differences.
GEOMATH_INLINE void FoldMirrored(double (&a)[4][4]) {
  for (std::size_t k = 0; k < 4; ++k) {
    const double outer = a[k][0], inner = a[k][1];
    a[k][0] = outer + a[k][3];
    a[k][1] = inner + a[k][2];
    a[k][2] = inner - a[k][2];
    a[k][3] = outer - a[k][3];
  }
  for (std::size_t k = 0; k < 4; ++k) {
    const double outer = a[0][k], inner = a[1][k];
    a[0][k] = outer + a[3][k];
    a[1][k] = inner + a[2][k];
    a[2][k] = inner - a[2][k];
    a[3][k] = outer - a[3][k];
  }
}

/// The height of ordinary kriging, γᵀ·P·z + mᵀ·z, with the variogram γ between the point and 4 × 4
/// nodes of heights z, and P and m from the inverse of the kriging matrix. Mirror images of the nodes
/// leave P as it is, so that in the numbers of FoldMirrored it falls into a form of four numbers for
/// each pair of symmetries, a quarter of the products.
struct MirroredKriging {
  double forms[4][4][4];  // of the symmetries of rows (twice) and columns
  double mean[4];         // m, which is even in both

  explicit MirroredKriging(const OrdinaryKriging& kriging);

  /// Index in one axis of number k, 0 or 1, of a symmetry: 0 even, 1 odd.
  static constexpr std::size_t At(std::size_t symmetry, std::size_t k) { return 2 * symmetry + k; }

  GEOMATH_INLINE double Height(double (&gamma)[4][4], double (&z)[4][4]) const {
    FoldMirrored(gamma);
    FoldMirrored(z);
    double height = 0;
    for (std::size_t k = 0; k < 4; ++k) height += mean[k] * z[k / 2][k % 2];
    for (std::size_t s = 0; s < 4; ++s) height += FormOf(s, gamma, z);
    return height;
  }

 private:
  GEOMATH_INLINE double FormOf(std::size_t s, const double (&gamma)[4][4],
                               const double (&z)[4][4]) const {
    const std::size_t r = At(s / 2, 0), c = At(s % 2, 0);
    const double right[] = {z[r][c], z[r][c + 1], z[r + 1][c], z[r + 1][c + 1]};
    const double left[] = {gamma[r][c], gamma[r][c + 1], gamma[r + 1][c], gamma[r + 1][c + 1]};
    double sum = 0;
    for (std::size_t i = 0; i < 4; ++i)
      sum += left[i] * ((forms[s][i][0] * right[0] + forms[s][i][1] * right[1]) +
                        (forms[s][i][2] * right[2] + forms[s][i][3] * right[3]));
    return sum;
  }
};

/// Ordinary kriging with the variogram h^1.5 over 4 × 4 floats, rows from the south, as GridKernel
/// runs it. A node of exactly 20000 is a hole.
struct Kriging {
  static constexpr int kSize = 4;
  static constexpr double kExponent = 1.5;
  GridFrame grid;
  MirroredKriging kriging;

  GEOMATH_INLINE Stencil Place(double lat, double lon) const {
    return PlaceInwards(grid, lat, lon);
  }
  GEOMATH_INLINE StencilSlopes PerRadian() const { return grid.StepsPerRadian(); }
  GEOMATH_INLINE double Height(const Stencil& at, const float (&nodes)[4][4], double) const {
    constexpr float kHole = static_cast<float>(kNoHeight);
    bool hole = false;
    double gamma[4][4], z[4][4];
    for (std::size_t r = 0; r < 4; ++r) {
      const double x = at.u - static_cast<double>(r);
      for (std::size_t c = 0; c < 4; ++c) {
        const double y = at.v - static_cast<double>(c);
        const double h = std::sqrt(x * x + y * y);
        gamma[r][c] = h * std::sqrt(h);
        z[r][c] = nodes[r][c];
        hole |= nodes[r][c] == kHole;
      }
    }
    const double height = kriging.Height(gamma, z);
    return hole ? kNoHeight : height;
  }
};

}  // namespace zel_cs::geomath
