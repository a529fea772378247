#pragma once

#include <cmath>
#include <cstddef>
#include <utility>

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

/// The transpose of it: what nodes count for, from what their sums and differences do.
GEOMATH_INLINE void UnfoldMirrored(double (&a)[4][4]) {
  const auto unfold = [](double& outer, double& inner, double& innerOdd, double& outerOdd) {
    const double sum = outer, half = inner;
    outer = sum + outerOdd;
    inner = half + innerOdd;
    innerOdd = half - innerOdd;
    outerOdd = sum - outerOdd;
  };
  // One by one: in loops they would keep the numbers in memory.
  unfold(a[0][0], a[0][1], a[0][2], a[0][3]);
  unfold(a[1][0], a[1][1], a[1][2], a[1][3]);
  unfold(a[2][0], a[2][1], a[2][2], a[2][3]);
  unfold(a[3][0], a[3][1], a[3][2], a[3][3]);
  unfold(a[0][0], a[1][0], a[2][0], a[3][0]);
  unfold(a[0][1], a[1][1], a[2][1], a[3][1]);
  unfold(a[0][2], a[1][2], a[2][2], a[3][2]);
  unfold(a[0][3], a[1][3], a[2][3], a[3][3]);
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

  /// Puts P·z in the place of heights: what γ at each node counts for.
  GEOMATH_INLINE void ToWeights(double (&z)[4][4]) const {
    FoldMirrored(z);
    WeighForm(0, z);  // one by one: in a loop they would keep z in memory
    WeighForm(1, z);
    WeighForm(2, z);
    WeighForm(3, z);
    UnfoldMirrored(z);
  }

 private:
  GEOMATH_INLINE double FormOf(std::size_t s, const double (&gamma)[4][4],
                               const double (&z)[4][4]) const {
    const std::size_t r = At(s / 2, 0), c = At(s % 2, 0);
    const double right[] = {z[r][c], z[r][c + 1], z[r + 1][c], z[r + 1][c + 1]};
    const double left[] = {gamma[r][c], gamma[r][c + 1], gamma[r + 1][c], gamma[r + 1][c + 1]};
    double sum = 0;
    for (std::size_t i = 0; i < 4; ++i) sum += left[i] * Product(forms[s][i], right);
    return sum;
  }
  GEOMATH_INLINE void WeighForm(std::size_t s, double (&z)[4][4]) const {
    const std::size_t r = At(s / 2, 0), c = At(s % 2, 0);
    const double right[] = {z[r][c], z[r][c + 1], z[r + 1][c], z[r + 1][c + 1]};
    z[r][c] = Product(forms[s][0], right);
    z[r][c + 1] = Product(forms[s][1], right);
    z[r + 1][c] = Product(forms[s][2], right);
    z[r + 1][c + 1] = Product(forms[s][3], right);
  }
  static GEOMATH_INLINE double Product(const double (&row)[4], const double (&right)[4]) {
    return (row[0] * right[0] + row[1] * right[1]) + (row[2] * right[2] + row[3] * right[3]);
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
  /// h^1.5 has the slope 1.5·√h along the way from the node, none at the node itself.
  GEOMATH_INLINE StencilSlopes Slopes(const Stencil& at, const float (&nodes)[4][4]) const {
    double weights[4][4];
    for (std::size_t r = 0; r < 4; ++r)
      for (std::size_t c = 0; c < 4; ++c) weights[r][c] = nodes[r][c];
    kriging.ToWeights(weights);
    StencilSlopes slopes{0, 0};
    const auto add = [&](double weight, double x, double y) {
      const double root = std::sqrt(std::sqrt(x * x + y * y));
      const double slope = weight * kExponent / (root > 0 ? root : 1);
      slopes.u += slope * x;
      slopes.v += slope * y;
    };
    [&]<std::size_t... K>(std::index_sequence<K...>) {
      (add(weights[K / 4][K % 4], at.u - K / 4, at.v - K % 4), ...);
    }
    (std::make_index_sequence<16>());  // no loop, for the same reason
    return slopes;
  }
};

}  // namespace zel_cs::geomath
