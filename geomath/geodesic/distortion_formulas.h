#pragma once

#include <cmath>
#include <cstddef>

#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// Tissot's indicatrix from the derivatives of a map (Snyder 1987, pp. 20-26, whose equation numbers
/// these are), over columns: the members of GridDerivatives and the latitude, and two columns that are
/// not read, become the members of Distortion in its order.
struct DistortionFormulas {
  static constexpr std::size_t kColumns = 7;
  double a, e2;  // of the ellipsoid

  /// The images of units of length northward and eastward from the derivatives, 4-10 and 4-11.
  template <class Math>
  GEOMATH_INLINE void ToImages(double& northN, double& northE, double& eastN, double& eastE,
                               double b) const {
    double s, c;
    Math::SinCos(b, s, c);
    const double w2 = 1 - e2 * (s * s), w = std::sqrt(w2);
    const double perN = w / a, perM = perN * w2 / (1 - e2), perParallel = perN / c;
    northN *= perM;
    northE *= perM;
    eastN *= perParallel;
    eastE *= perParallel;
  }

  template <class Math>
  GEOMATH_INLINE void Convert(double& nn, double& ne, double& en, double& ee, double& b,
                              double& major, double& minor) const {
    ToImages<Math>(nn, ne, en, ee, b);
    // a' and b' of 4-12 and 4-13 as sums of squares: no digits of a conformal map cancel.
    const double upright = Length(nn + ee, ne - en), mirrored = Length(nn - ee, ne + en);
    const double sum = upright < mirrored ? mirrored : upright;
    const double difference = upright < mirrored ? upright : mirrored;
    const double h = Length(nn, ne), k = Length(en, ee), areal = nn * ee - ne * en;
    const double convergence = -Math::Atan2(ne, nn);
    major = (sum + difference) / 2;
    minor = (sum - difference) / 2;
    b = 2 * Math::Atan2(difference, std::sqrt((sum - difference) * (sum + difference)));  // 4-1
    nn = h;
    ne = k;
    en = areal;
    ee = convergence;
  }

 private:
  static GEOMATH_INLINE double Length(double x, double y) { return std::sqrt(x * x + y * y); }
};

}  // namespace zel_cs::geomath
