#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/meridian_series.h"

namespace zel_cs::geomath {

/// Isometric latitude ψ(φ) = artanh(sin φ) − e·artanh(e·sin φ), Snyder 1987, eq. 3-7 (there ln of
/// the tangent form), odd in φ and without loss at the equator or near the poles; ±∞ at the poles.
/// exp(−ψ) is the t(φ) of Snyder 1987, eq. 15-9. With e = 0 it is the spherical one.
double IsometricLatitude(double sinPhi, double cosPhi, double e);
double IsometricLatitude(double phi, double e);

/// The latitude whose isometric latitude is `psi`: fixed-point steps (Snyder 1987, eq. 3-4) until
/// one changes the latitude by less than 1e-14, at most 50. Each step shrinks the error at least
/// 140-fold on an Earth ellipsoid.
double LatitudeFromIsometric(double psi, double e);

/// Sine and cosine of one angle.
struct SinCos {
  double sin, cos;
};

/// Geodetic latitude φ, conformal latitude χ and isometric latitude ψ = artanh(sin χ) of one
/// ellipsoid, its constants prepared once. All results are good to a few units in the last place
/// of one radian (of ψ itself where that is larger), poles and equator included.
///
/// With T = tanh(e·artanh(e·sin φ)) the definition (Snyder 1987, eq. 3-1) becomes an addition
/// theorem of the hyperbolic tangent, free of transcendental functions:
///   sin χ = (sin φ − T)/(1 − T·sin φ),  cos χ = cos φ·√(1 − T²)/(1 − T·sin φ).
class ConformalLatitude {
 public:
  /// The sphere, where all three latitudes are one.
  ConformalLatitude() = default;
  explicit ConformalLatitude(const Ellipsoid& ell);

  /// Isometric latitude of a geodetic one.
  double Isometric(double sinPhi, double cosPhi) const;
  double Isometric(double phi) const;

  /// Conformal latitude of a geodetic one.
  SinCos FromGeodetic(double sinPhi, double cosPhi) const;

  /// Geodetic latitude, radians, of a conformal one; sine and cosine may carry a common positive
  /// rounding factor.
  ///
  /// On an ellipsoid of the Earth's flattening this is the series in the third flattening to n⁶
  /// (Kawase 2011; Karney 2024), which falls short of the exact value by less than 1e-17. That value is the fixed point of the step tan(π/4 + φ/2) ←
  /// tan(π/4 + χ/2)·((1 + e·sin φ)/(1 − e·sin φ))^(e/2) (Snyder 1987, eq. 3-4), which shrinks the
  /// error 140-fold, so that the 10 or 20 steps of the classical methods end there as well: after
  /// k steps from φ = χ the error is below e²·(e²/(1 − e²))^k. On flatter figures those 20 steps
  /// are made.
  double ToGeodetic(SinCos chi) const;

  /// Geodetic latitude of an isometric one; ±π/2 for ±∞.
  double FromIsometric(double psi) const;

  /// The same as the limit of the fixed-point steps, for methods that give up: false, with the last
  /// value, when two successive ones still differ by more than `tolerance` after `maxSteps` steps.
  /// On an ellipsoid of the Earth's flattening they never do.
  bool FromIsometric(double psi, double tolerance, int maxSteps, double& phi) const;

 private:
  double Excess(double sinPhi) const;
  double TanhExcess(double sinPhi) const;
  SinCos FixedPointStep(SinCos chi, double sinPhi) const;

  double e_ = 0, e2_ = 0;
  bool nearSphere_ = true;  // the series hold
  double toGeodetic_[6] = {};
};

/// Conformal to geodetic latitude by the classical series in e² to e⁸ (Snyder 1987, eq. 3-5), which
/// some grids prescribe; within 2e-12 rad of ConformalLatitude on an Earth ellipsoid.
CosinePowerSeries ConformalSeries(double e2);

/// Radius of the parallel over a: m(φ) = cos φ/√(1 − e²·sin²φ). Snyder 1987, eq. 14-15.
double ParallelRadius(double sinPhi, double cosPhi, double e2);

/// Radius of curvature in the prime vertical ν, metres.
double PrimeVerticalRadius(double sinPhi, const Ellipsoid& ell);

/// Radius of curvature in the meridian ρ, metres.
double MeridianRadius(double sinPhi, const Ellipsoid& ell);

}  // namespace zel_cs::geomath
