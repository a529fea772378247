#pragma once

#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// A 3 × 3 matrix as plain numbers, for loops over columns too.
struct Matrix3 {
  double m[3][3];

  static constexpr Matrix3 Identity() { return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}; }

  friend GEOMATH_INLINE Matrix3 operator*(const Matrix3& a, const Matrix3& b) {
    Matrix3 product;
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c)
        product.m[r][c] = a.m[r][0] * b.m[0][c] + a.m[r][1] * b.m[1][c] + a.m[r][2] * b.m[2][c];
    return product;
  }

  GEOMATH_INLINE Matrix3 Transposed() const {
    return {
        {{m[0][0], m[1][0], m[2][0]}, {m[0][1], m[1][1], m[2][1]}, {m[0][2], m[1][2], m[2][2]}}};
  }

  /// By cofactors; not finite for a singular matrix.
  GEOMATH_INLINE Matrix3 Inverse() const {
    const double c00 = m[1][1] * m[2][2] - m[1][2] * m[2][1];
    const double c01 = m[1][2] * m[2][0] - m[1][0] * m[2][2];
    const double c02 = m[1][0] * m[2][1] - m[1][1] * m[2][0];
    const double d = 1 / (m[0][0] * c00 + m[0][1] * c01 + m[0][2] * c02);
    return {{{c00 * d, (m[0][2] * m[2][1] - m[0][1] * m[2][2]) * d,
              (m[0][1] * m[1][2] - m[0][2] * m[1][1]) * d},
             {c01 * d, (m[0][0] * m[2][2] - m[0][2] * m[2][0]) * d,
              (m[0][2] * m[1][0] - m[0][0] * m[1][2]) * d},
             {c02 * d, (m[0][1] * m[2][0] - m[0][0] * m[2][1]) * d,
              (m[0][0] * m[1][1] - m[0][1] * m[1][0]) * d}}};
  }

  /// The nine numbers, row by row, as columns hold them.
  template <class... Numbers>
  static GEOMATH_INLINE Matrix3 Of(Numbers... numbers) {
    static_assert(sizeof...(Numbers) == 9);
    const double all[] = {numbers...};
    Matrix3 matrix;
    for (int i = 0; i < 9; ++i) matrix.m[i / 3][i % 3] = all[i];
    return matrix;
  }
  template <class... Numbers>
  GEOMATH_INLINE void To(Numbers&... numbers) const {
    static_assert(sizeof...(Numbers) == 9);
    int i = 0;
    ((numbers = m[i / 3][i % 3], ++i), ...);
  }
};

}  // namespace zel_cs::geomath
