#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// x + c2·sin 2x + c4·sin 4x + c6·sin 6x + c8·sin 8x, kept in powers of the cosine:
/// x + sin x·cos x·(p0 + p2·cos²x + p4·cos⁴x + p6·cos⁶x).
class CosinePowerSeries {
 public:
  CosinePowerSeries() = default;
  CosinePowerSeries(double c2, double c4, double c6, double c8);
  double operator()(double x) const { return Evaluate<simd::Scalar>(x); }
  /// The same where sine and cosine of x are known.
  template <class Real>
  GEOMATH_INLINE Real operator()(Real x, Real sinX, Real cosX) const {
    const Real cos2 = cosX * cosX;
    return x + sinX * cosX * (p0_ + cos2 * (p2_ + cos2 * (p4_ + cos2 * p6_)));
  }
  /// The same in the functions of `Math`.
  template <class Math>
  GEOMATH_INLINE double Evaluate(double x) const {
    double sinX, cosX;
    Math::SinCos(x, sinX, cosX);
    return (*this)(x, sinX, cosX);
  }

 private:
  double p0_ = 0, p2_ = 0, p4_ = 0, p6_ = 0;
};

/// Meridian arc and footpoint latitude in the third flattening n, to n⁴, in the form of the
/// transverse Mercator grids of the United States (Stem 1989, NOAA Manual NOS NGS 5, pp. 32-34).
/// Both directions are good to 1e-6 m on an Earth ellipsoid.
struct MeridianSeries {
  explicit MeridianSeries(const Ellipsoid& ell);

  /// Arc from the equator to latitude phi, metres.
  double Arc(double phi) const { return r * arc(phi); }
  template <class Real>
  GEOMATH_INLINE Real Arc(Real phi, Real sinPhi, Real cosPhi) const {
    return r * arc(phi, sinPhi, cosPhi);
  }
  /// Latitude whose arc from the equator is `metres`.
  double Footpoint(double metres) const { return footpoint(metres / r); }

  double r;                     ///< rectifying radius, metres
  double u2, u4, u6, u8;        ///< arc coefficients of sin 2φ … sin 8φ
  CosinePowerSeries arc;        ///< latitude to rectifying latitude
  CosinePowerSeries footpoint;  ///< rectifying latitude to latitude
};

}  // namespace zel_cs::geomath
