#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/meridian_series.h"
#include "geomath/proj/methods/math/multiple_angles.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

/// Isometric latitude ψ(φ) = artanh(sin φ) − e·artanh(e·sin φ), Snyder 1987, eq. 3-7 (there ln of
/// the tangent form), odd in φ and without loss at the equator or near the poles; ±∞ at the poles.
/// exp(−ψ) is the t(φ) of Snyder 1987, eq. 15-9. With e = 0 it is the spherical one.
double IsometricLatitude(double sinPhi, double cosPhi, double e);
double IsometricLatitude(double phi, double e);

/// Whether a latitude is a number from pole to pole.
inline bool IsLatitude(double phi) { return std::abs(phi) <= kHalfPi; }

/// Isometric latitude on the sphere, ψ = artanh(sin χ), of a latitude χ in [−π/2, π/2]. Sine and
/// cosine may carry a common rounding factor. Absolute accuracy near the equator is that of one.
template <class Math>
GEOMATH_INLINE typename Math::Real SphericalIsometric(SineCosineOf<typename Math::Real> chi) {
  return Math::CopySign(Math::Log((1 + Math::Abs(chi.sin)) / chi.cos), chi.sin);
}

/// The angle whose isometric latitude on the sphere is ψ: sin = tanh ψ, cos = 1/cosh ψ. In columns
/// |ψ| counts as 700 beyond that, where their exponential function ends and cos χ is 2e-304.
template <class Math>
GEOMATH_INLINE SineCosineOf<typename Math::Real> Gudermannian(typename Math::Real psi) {
  using Real = typename Math::Real;
  constexpr double kLargest = 700;
  Real size = Math::Abs(psi);
  if constexpr (Math::kColumns) size = size > kLargest ? kLargest : size;
  const Real decay = Math::Exp(-size), decay2 = decay * decay;
  const Real divisor = 1 + decay2;
  return {Math::CopySign((1 - decay2) / divisor, psi), 2 * decay / divisor};
}

/// artanh(e·s)/e for |s| ≤ 1 by its power series in e², s itself on the sphere; for ellipsoids of the
/// Earth's flattening, where the first term left out is below 1e-15 of the result.
template <class Real>
GEOMATH_INLINE Real ArtanhOverE(Real s, double e2) {
  constexpr double c[] = {1.0 / 3, 1.0 / 5, 1.0 / 7, 1.0 / 9, 1.0 / 11, 1.0 / 13};
  const Real x = e2 * (s * s);
  return s * (1 + x * (c[0] + x * (c[1] + x * (c[2] + x * (c[3] + x * (c[4] + x * c[5]))))));
}

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

  /// Columns (Math::kColumns) hold for ellipsoids of the Earth's flattening only.
  GEOMATH_INLINE bool ServesColumns() const { return nearSphere_; }

  /// Isometric latitude of a geodetic one.
  template <class Math = simd::Scalar>
  GEOMATH_INLINE typename Math::Real Isometric(typename Math::Real sinPhi,
                                               typename Math::Real cosPhi) const {
    return SphericalIsometric<Math>({sinPhi, cosPhi}) - Excess<Math>(sinPhi);
  }
  double Isometric(double phi) const;

  /// Conformal latitude of a geodetic one.
  template <class Math = simd::Scalar>
  GEOMATH_INLINE SineCosineOf<typename Math::Real> FromGeodetic(typename Math::Real sinPhi,
                                                                typename Math::Real cosPhi) const {
    using Real = typename Math::Real;
    const Real T = TanhExcess<Math>(sinPhi);
    const Real divisor = 1 - T * sinPhi;
    return {(sinPhi - T) / divisor, cosPhi * Math::Sqrt(1 - T * T) / divisor};
  }

  /// Geodetic latitude, radians, of a conformal one; sine and cosine may carry a common positive
  /// rounding factor.
  ///
  /// On an ellipsoid of the Earth's flattening this is the series in the third flattening to n⁶
  /// (Kawase 2011; Karney 2024), which falls short of the exact value by less than 1e-17. That value
  /// is the fixed point of the step tan(π/4 + φ/2) ←
  /// tan(π/4 + χ/2)·((1 + e·sin φ)/(1 − e·sin φ))^(e/2) (Snyder 1987, eq. 3-4), which shrinks the
  /// error 140-fold, so that the 10 or 20 steps of the classical methods end there as well: after
  /// k steps from φ = χ the error is below e²·(e²/(1 − e²))^k. On flatter figures those 20 steps
  /// are made.
  template <class Math = simd::Scalar>
  GEOMATH_INLINE double ToGeodetic(SineCosine chi) const {
    if constexpr (!Math::kColumns)
      if (!nearSphere_) return FlatToGeodetic(chi);
    const double sin2 = 2 * chi.sin * chi.cos, cos2 = (chi.cos - chi.sin) * (chi.cos + chi.sin);
    return Math::Atan2(chi.sin, chi.cos) + ClenshawSin(toGeodetic_, sin2, cos2);
  }

  /// Geodetic latitude of an isometric one; ±π/2 for ±∞.
  template <class Math = simd::Scalar>
  GEOMATH_INLINE double FromIsometric(double psi) const {
    return ToGeodetic<Math>(Gudermannian<Math>(psi));
  }

  /// The same as the limit of the fixed-point steps, for methods that give up: false, with the last
  /// value, when two successive ones still differ by more than `tolerance` after `maxSteps` steps.
  /// On an ellipsoid of the Earth's flattening they never do.
  bool FromIsometric(double psi, double tolerance, int maxSteps, double& phi) const;

 private:
  // e·artanh(e·sin φ), by which the isometric latitude falls short of the spherical one. Near the
  // sphere its power series; the first term left out is below 1e-17.
  template <class Math>
  GEOMATH_INLINE typename Math::Real Excess(typename Math::Real s) const {
    if constexpr (!Math::kColumns)
      if (!nearSphere_) return FlatExcess(s);
    return e2_ * ArtanhOverE(s, e2_);
  }

  // The T of the addition theorem; near the sphere by the power series of the hyperbolic tangent,
  // whose argument is at most 0.01.
  template <class Math>
  GEOMATH_INLINE typename Math::Real TanhExcess(typename Math::Real s) const {
    using Real = typename Math::Real;
    if constexpr (!Math::kColumns)
      if (!nearSphere_) return Tanh(FlatExcess(s));
    const Real x = Excess<Math>(s), x2 = x * x;
    return x * (1 - x2 * (1.0 / 3 - x2 * (2.0 / 15 - x2 * (17.0 / 315))));
  }

  double FlatExcess(double sinPhi) const;
  double FlatToGeodetic(SineCosine chi) const;
  SineCosine FixedPointStep(SineCosine chi, double sinPhi) const;

  double e_ = 0, e2_ = 0;
  bool nearSphere_ = true;  // the series hold
  double toGeodetic_[6] = {};
};

/// Conformal to geodetic latitude by the classical series in e² to e⁸ (Snyder 1987, eq. 3-5), which
/// some grids prescribe; within 2e-12 rad of ConformalLatitude on an Earth ellipsoid.
CosinePowerSeries ConformalSeries(double e2);

/// Radius of the parallel over a: m(φ) = cos φ/√(1 − e²·sin²φ). Snyder 1987, eq. 14-15.
template <class Real>
GEOMATH_INLINE Real ParallelRadius(Real sinPhi, Real cosPhi, double e2) {
  using std::sqrt;
  return cosPhi / sqrt(1 - e2 * (sinPhi * sinPhi));
}

}  // namespace zel_cs::geomath
