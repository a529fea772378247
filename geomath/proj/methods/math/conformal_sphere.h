#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/latitude.h"

namespace zel_cs::geomath {

/// The Gaussian conformal sphere that touches the ellipsoid at a normal latitude with stationary
/// scale (Gauss 1844; Snyder 1987, p. 160; EPSG Guidance Note 7-2, method 9809):
///   χ = gd(α·ψ(φ) + K),  Λ = α·(λ − λ0),  R = √(ρ0·ν0)
/// Shared by the double stereographic, Swiss, Krovak and Gauss–Schreiber projections.
class ConformalSphere {
 public:
  ConformalSphere() = default;
  ConformalSphere(const Ellipsoid& ell, double normalLatitude);

  /// As of ConformalLatitude.
  GEOMATH_INLINE bool ServesColumns() const { return latitude_.ServesColumns(); }

  /// Sine and cosine of the spherical latitude χ of the geodetic latitude φ.
  template <class Math = simd::Scalar>
  GEOMATH_INLINE SineCosineOf<typename Math::Real> Latitude(typename Math::Real sinPhi,
                                                            typename Math::Real cosPhi) const {
    return Gudermannian<Math>(alpha * latitude_.Isometric<Math>(sinPhi, cosPhi) + K);
  }
  /// The spherical latitude χ, radians.
  double Latitude(double phi) const;
  /// The geodetic latitude of the spherical latitude χ, both radians; ±π/2 for ±π/2.
  double Geodetic(double chi) const;
  /// The same from sine and cosine, which may carry a common positive rounding factor.
  template <class Math = simd::Scalar>
  GEOMATH_INLINE double Geodetic(SineCosine chi) const {
    return latitude_.FromIsometric<Math>(Isometric<Math>(chi));
  }

  /// The geodetic latitude, with the stop rule of ConformalLatitude::FromIsometric.
  bool Geodetic(SineCosine chi, double tolerance, int maxSteps, double& phi) const;

  double R = 0;      ///< Gaussian radius at the normal latitude, metres
  double alpha = 1;  ///< ratio of spherical to geodetic longitudes
  double K = 0;      ///< constant of the isometric latitudes; exp(K) is the c of method 9809
  double chi0 = 0;   ///< spherical latitude of the normal latitude, radians

 private:
  // The isometric latitude on the ellipsoid of a spherical latitude.
  template <class Math>
  GEOMATH_INLINE double Isometric(SineCosine chi) const {
    return (SphericalIsometric<Math>(chi) - K) / alpha;
  }

  ConformalLatitude latitude_;
};

}  // namespace zel_cs::geomath
