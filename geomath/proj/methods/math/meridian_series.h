#pragma once

#include "geomath/base/ellipsoid.h"

namespace zel_cs::geomath {

/// x + c2·sin 2x + c4·sin 4x + c6·sin 6x + c8·sin 8x, kept in powers of the cosine:
/// x + sin x·cos x·(p0 + p2·cos²x + p4·cos⁴x + p6·cos⁶x).
class CosinePowerSeries {
 public:
  CosinePowerSeries(double c2, double c4, double c6, double c8);
  double operator()(double x) const;
  /// The same where sine and cosine of x are known.
  double operator()(double x, double sinX, double cosX) const;

 private:
  double p0_, p2_, p4_, p6_;
};

/// Meridian arc and footpoint latitude in the third flattening n, to n⁴, in the form of the
/// transverse Mercator grids of the United States (Stem 1989, NOAA Manual NOS NGS 5, pp. 32-34).
/// Both directions are good to 1e-6 m on an Earth ellipsoid.
struct MeridianSeries {
  explicit MeridianSeries(const Ellipsoid& ell);

  /// Arc from the equator to latitude phi, metres.
  double Arc(double phi) const { return r * arc(phi); }
  double Arc(double phi, double sinPhi, double cosPhi) const {
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
