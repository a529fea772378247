#pragma once

#include <cstddef>

#include "geomath/base/matrix3.h"
#include "geomath/base/tangent_formulas.h"

/// What a CoordinateChain does to small changes of a position, for one point: the statements of
/// column kernels. Nine columns are a matrix row by row, six the upper triangle of a symmetric one.
namespace zel_cs::geomath {

/// Whether a matrix is a covariance: symmetric, and no variance negative in any direction, but for
/// rounding; not where a number is not finite. Columns: the nine of the matrix, which stay, and the
/// mark, 0 for one and 1 for none. The least of what must not be negative decides, without branches.
struct MarkCovariance {
  static constexpr std::size_t kColumns = 10;
  static constexpr double kRounding = 1e-9;  ///< relative to the variances

  /// What an entry leaves of the rounding of its mirror image, and of its bound.
  static GEOMATH_INLINE double Pair(double upper, double lower, double product) {
    const double difference = upper - lower;
    const double symmetry = kRounding * kRounding * product - difference * difference;
    return Least(symmetry, product * (1 + kRounding) - upper * upper);
  }
  static GEOMATH_INLINE double Least(double x, double y) { return x < y ? x : y; }

  template <class Math>
  GEOMATH_INLINE void Convert(double& xx, double& xy, double& xz, double& yx, double& yy,
                              double& yz, double& zx, double& zy, double& zz, double& mark) const {
    const double xyz = xx * yy * zz;
    const double determinant = xyz + 2 * xy * xz * yz - xx * yz * yz - yy * xz * xz - zz * xy * xy;
    const double pairs =
        Least(Least(Pair(xy, yx, xx * yy), Pair(xz, zx, xx * zz)), Pair(yz, zy, yy * zz));
    const double least =
        Least(Least(Least(xx, yy), Least(zz, pairs)), determinant + kRounding * xyz);
    // Least may drop NaN, the sum does not.
    const double finite = 0 * (determinant + (xx + yy + zz) + (yx + zx + zy));
    mark = least + finite >= 0 ? 0 : 1;
  }
};

/// Two rows and columns of a plane, as they stand or as their inverse.
struct PlaneTangent {
  double a, b, c, d;

  template <bool kInverse>
  static GEOMATH_INLINE PlaneTangent Of(double t00, double t01, double t10, double t11) {
    const double q = kInverse ? 1 / (t00 * t11 - t01 * t10) : 1;
    return {kInverse ? t11 * q : t00, kInverse ? -t01 * q : t01, kInverse ? -t10 * q : t10,
            kInverse ? t00 * q : t11};
  }

  /// These rows and columns times those of others.
  GEOMATH_INLINE void Times(double& t00, double& t01, double& t10, double& t11) const {
    const double north[] = {t00, t01}, east[] = {t10, t11};
    t00 = a * north[0] + b * east[0];
    t01 = a * north[1] + b * east[1];
    t10 = c * north[0] + d * east[0];
    t11 = c * north[1] + d * east[1];
  }

  /// What (x, y) with this covariance becomes, and that of z with it.
  GEOMATH_INLINE void Carry(double& xx, double& xy, double& yy, double& xz, double& yz) const {
    const double ax = a * xx + b * xy, ay = a * xy + b * yy;
    const double cx = c * xx + d * xy, cy = c * xy + d * yy;
    const double az = a * xz + b * yz, cz = c * xz + d * yz;
    xx = ax * a + ay * b;
    xy = ax * c + ay * d;
    yy = cx * c + cy * d;
    xz = az;
    yz = cz;
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
  PlaneTangent matrix;

  template <class Math>
  GEOMATH_INLINE void Convert(double& t00, double& t01, double& t10, double& t11) const {
    matrix.Times(t00, t01, t10, t11);
  }
};

/// The same of those behind which a height depends on the place, with a matrix that tilts heights,
/// whose own row in it is (m20, m21, 1). Columns: four of the plane, and the two of the height by the
/// plane.
struct TimesInclined {
  static constexpr std::size_t kColumns = 6;
  PlaneTangent matrix;
  double m20, m21;

  template <class Math>
  GEOMATH_INLINE void Convert(double& t00, double& t01, double& t10, double& t11, double& t20,
                              double& t21) const {
    t20 += m20 * t00 + m21 * t10;
    t21 += m20 * t01 + m21 * t11;
    matrix.Times(t00, t01, t10, t11);
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

/// The same, or with the inverse of the derivatives, of a plane that heights have no part in: columns
/// those of GridDerivatives, which stay, and the four of the plane's rows.
template <bool kInverse>
struct ProjectPlane {
  static constexpr std::size_t kColumns = 8;

  template <class Math>
  GEOMATH_INLINE void Convert(double& northB, double& eastB, double& northL, double& eastL,
                              double& b0, double& b1, double& l0, double& l1) const {
    PlaneTangent::Of<kInverse>(northB, northL, eastB, eastL).Times(b0, b1, l0, l1);
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
    PlaneTangent::Of<kInverse>(t00, t01, t10, t11).Carry(xx, xy, yy, xz, yz);
  }
};

/// The same with a T that turns and stretches the plane by itself, and has heights depend on it:
/// columns six of C and, which stay, four of the plane's rows and the three of the height's.
template <bool kInverse>
struct PropagateSloped {
  static constexpr std::size_t kColumns = 13;

  template <class Math>
  GEOMATH_INLINE void Convert(double& xx, double& xy, double& xz, double& yy, double& yz,
                              double& zz, double& t00, double& t01, double& t10, double& t11,
                              double& t20, double& t21, double& t22) const {
    const PlaneTangent plane = PlaneTangent::Of<kInverse>(t00, t01, t10, t11);
    const double h = kInverse ? 1 / t22 : t22;
    const double x = kInverse ? -h * (t20 * plane.a + t21 * plane.c) : t20;
    const double y = kInverse ? -h * (t20 * plane.b + t21 * plane.d) : t21;
    const double hx = h * xz, hy = h * yz;
    xz = xx * x + xy * y + hx;
    yz = xy * x + yy * y + hy;
    zz = x * (xz + hx) + y * (yz + hy) + h * h * zz;
    plane.Carry(xx, xy, yy, xz, yz);
  }
};

}  // namespace zel_cs::geomath
