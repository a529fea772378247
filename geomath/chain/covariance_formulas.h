#pragma once

#include <cstddef>
#include <limits>

#include "geomath/base/matrix3.h"
#include "geomath/base/tangent_formulas.h"

/// What a CoordinateChain does to small changes of a position, for one point: the statements of
/// column kernels. Nine columns are a matrix row by row, six the upper triangle of a symmetric one.
namespace zel_cs::geomath {

/// Whether a matrix is a covariance: symmetric, and no variance negative in any direction, but for
/// rounding; not where a number is not finite. Columns: the nine of the matrix, which stay, and the
/// mark, 0 for one and 1 for none. Without branches, and in numbers of one width, so that it vectorises.
struct MarkCovariance {
  static constexpr std::size_t kColumns = 10;
  static constexpr double kRounding = 1e-9;  ///< relative to the variances

  static GEOMATH_INLINE bool Pair(double upper, double lower, double product) {
    const double difference = upper - lower;
    const bool symmetric = difference * difference <= kRounding * kRounding * product;
    const bool small = upper * upper <= product * (1 + kRounding);
    return symmetric & small;
  }

  template <class Math>
  GEOMATH_INLINE void Convert(double& xx, double& xy, double& xz, double& yx, double& yy,
                              double& yz, double& zx, double& zy, double& zz, double& mark) const {
    constexpr double kLargest = std::numeric_limits<double>::max();
    const bool variances = (xx >= 0) & (yy >= 0) & (zz >= 0);
    const bool finite = (xx <= kLargest) & (yy <= kLargest) & (zz <= kLargest);
    const bool xyPair = Pair(xy, yx, xx * yy), xzPair = Pair(xz, zx, xx * zz);
    const bool yzPair = Pair(yz, zy, yy * zz);
    const double determinant =
        xx * yy * zz + 2 * xy * xz * yz - xx * yz * yz - yy * xz * xz - zz * xy * xy;
    const bool notNegative = determinant >= -kRounding * xx * yy * zz;
    mark = (variances & finite & xyPair & xzPair & yzPair & notNegative) ? 0 : 1;
  }
};

/// T ← M·T with one matrix for all points.
struct TimesTangent {
  static constexpr std::size_t kColumns = 9;
  Matrix3 matrix;

  template <class Math, class... Nine>
  GEOMATH_INLINE void Convert(Nine&... nine) const {
    (matrix * Matrix3::Of(nine...)).To(nine...);
  }
};

/// The same of the four that do not leave the plane.
struct TimesLevel {
  static constexpr std::size_t kColumns = 4;
  double m00, m01, m10, m11;

  template <class Math>
  GEOMATH_INLINE void Convert(double& t00, double& t01, double& t10, double& t11) const {
    const double north[] = {t00, t01}, east[] = {t10, t11};
    t00 = m00 * north[0] + m01 * east[0];
    t01 = m00 * north[1] + m01 * east[1];
    t10 = m10 * north[0] + m11 * east[0];
    t11 = m10 * north[1] + m11 * east[1];
  }
};

/// T ← M·T with a matrix for each point, or with its inverse. Columns: nine of M, which stay, and T.
template <bool kInverse>
struct TimesEach {
  static constexpr std::size_t kColumns = 18;

  template <class Math, class... Nine>
  GEOMATH_INLINE void Convert(double& m0, double& m1, double& m2, double& m3, double& m4,
                              double& m5, double& m6, double& m7, double& m8, Nine&... nine) const {
    const Matrix3 matrix = Matrix3::Of(m0, m1, m2, m3, m4, m5, m6, m7, m8);
    ((kInverse ? matrix.Inverse() : matrix) * Matrix3::Of(nine...)).To(nine...);
  }
};

/// A derivative of heights through a vertical shift, or back, whose last row of derivatives is
/// (b, l, h): columns b, l, h, the derivatives of latitude and longitude, which stay, and that of the
/// height.
template <bool kInverse>
struct LowerHeight {
  static constexpr std::size_t kColumns = 6;

  template <class Math>
  GEOMATH_INLINE void Convert(double& b, double& l, double& h, double& latitude, double& longitude,
                              double& height) const {
    const double level = b * latitude + l * longitude;
    height = kInverse ? (height - level) / h : level + h * height;
  }
};

/// The first two rows of T through the derivatives of a projection. Columns: those of
/// GridDerivatives, which stay, and the six of the rows.
struct ProjectTangent {
  static constexpr std::size_t kColumns = 10;

  template <class Math>
  GEOMATH_INLINE void Convert(double& northB, double& eastB, double& northL, double& eastL,
                              double& b0, double& b1, double& b2, double& l0, double& l1,
                              double& l2) const {
    const double b[] = {b0, b1, b2}, l[] = {l0, l1, l2};
    b0 = northB * b[0] + northL * l[0];
    b1 = northB * b[1] + northL * l[1];
    b2 = northB * b[2] + northL * l[2];
    l0 = eastB * b[0] + eastL * l[0];
    l1 = eastB * b[1] + eastL * l[1];
    l2 = eastB * b[2] + eastL * l[2];
  }
};

/// A symmetric matrix as six numbers.
struct Symmetric3 {
  double xx, xy, xz, yy, yz, zz;

  GEOMATH_INLINE Matrix3 Full() const { return {{{xx, xy, xz}, {xy, yy, yz}, {xz, yz, zz}}}; }
  /// J·C·Jᵀ.
  GEOMATH_INLINE Symmetric3 Through(const Matrix3& J) const {
    const Matrix3 half = J * Full();
    const auto at = [&](int r, int c) {
      return half.m[r][0] * J.m[c][0] + half.m[r][1] * J.m[c][1] + half.m[r][2] * J.m[c][2];
    };
    return {at(0, 0), at(0, 1), at(0, 2), at(1, 1), at(1, 2), at(2, 2)};
  }
};

/// The derivatives of a projection by metres at the positions: latitude and ellipsoidal height, which
/// stay, and those of GridDerivatives.
struct GridPerMetre {
  static constexpr std::size_t kColumns = 6;
  double a, e2;

  explicit GridPerMetre(const Ellipsoid& ell) : a(ell.a), e2(ell.e2) {}

  template <class Math>
  GEOMATH_INLINE void Convert(double& B, double& h, double& northB, double& eastB, double& northL,
                              double& eastL) const {
    const TangentFrame frame = TangentFrame::At<Math>(a, e2, B, 0, h);
    const double perNorth = 1 / frame.perLatitude, perEast = 1 / frame.perLongitude;
    northB *= perNorth;
    eastB *= perNorth;
    northL *= perEast;
    eastL *= perEast;
  }
  GEOMATH_INLINE bool Serves(double B, double, double, double, double, double) const {
    return TangentFrame::ServesColumns(B, 0);
  }
};

/// C ← T·C·Tᵀ, or with the inverse of T. Columns: six of C and nine of T, which stay.
template <bool kInverse>
struct Propagate {
  static constexpr std::size_t kColumns = 15;

  template <class Math, class... Nine>
  GEOMATH_INLINE void Convert(double& xx, double& xy, double& xz, double& yy, double& yz,
                              double& zz, Nine&... nine) const {
    const Matrix3 tangent = Matrix3::Of(nine...);
    const Symmetric3 given{xx, xy, xz, yy, yz, zz};
    const Symmetric3 found = given.Through(kInverse ? tangent.Inverse() : tangent);
    xx = found.xx;
    xy = found.xy;
    xz = found.xz;
    yy = found.yy;
    yz = found.yz;
    zz = found.zz;
  }
};

/// The same with a T that leaves heights alone: columns six of C and four of T, which stay.
template <bool kInverse>
struct PropagateLevel {
  static constexpr std::size_t kColumns = 10;

  template <class Math>
  GEOMATH_INLINE void Convert(double& xx, double& xy, double& xz, double& yy, double& yz, double&,
                              double& t00, double& t01, double& t10, double& t11) const {
    const double d = kInverse ? 1 / (t00 * t11 - t01 * t10) : 1;
    const double a = kInverse ? t11 * d : t00, b = kInverse ? -t01 * d : t01;
    const double c = kInverse ? -t10 * d : t10, e = kInverse ? t00 * d : t11;
    const double ax = a * xx + b * xy, ay = a * xy + b * yy;
    const double cx = c * xx + e * xy, cy = c * xy + e * yy;
    const double az = a * xz + b * yz, cz = c * xz + e * yz;
    xx = ax * a + ay * b;
    xy = ax * c + ay * e;
    yy = cx * c + cy * e;
    xz = az;
    yz = cz;
  }
};

}  // namespace zel_cs::geomath
