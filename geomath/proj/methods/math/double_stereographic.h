#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/column_range.h"
#include "geomath/proj/methods/math/conformal_sphere.h"
#include "geomath/proj/point_factors.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// The oblique ("double") stereographic projection on plain numbers, without false origin: the
/// ellipsoid onto the Gaussian conformal sphere of the origin, the sphere stereographically onto
/// the plane from the antipode of the origin (EPSG method 9809; Snyder 1987, p. 160).
class DoubleStereographic {
 public:
  DoubleStereographic() = default;
  DoubleStereographic(const Ellipsoid& ell, double lat0, double lon0, double scale);

  /// A point on the sphere: latitude χ, and longitude Λ from the meridian of origin.
  template <class Real>
  struct SpherePointOf {
    SineCosineOf<Real> chi;
    SineCosineOf<Real> Lambda;
  };
  using SpherePoint = SpherePointOf<double>;
  /// Northing and easting, metres, of a point; not finite at the antipode of the origin.
  template <class Real>
  struct ImageOf {
    Real north, east;
    SpherePointOf<Real> at;
    Real cosPhi;
  };
  using Image = ImageOf<double>;
  /// The image of a point. Longitudes are not folded.
  template <class Math>
  GEOMATH_INLINE ImageOf<typename Math::Real> Project(typename Math::Real phi,
                                                      typename Math::Real lambda) const {
    using Real = typename Math::Real;
    Real sinPhi, cosPhi;
    SpherePointOf<Real> at;
    Math::SinCos(phi, sinPhi, cosPhi);
    Math::SinCos(sphere_.alpha * (lambda - lambda0_), at.Lambda.sin, at.Lambda.cos);
    at.chi = sphere_.Latitude<Math>(sinPhi, cosPhi);
    const Real perUnit = diameter_ / Denominator(at);
    return {perUnit * (cosChi0_ * at.chi.sin - sinChi0_ * at.chi.cos * at.Lambda.cos),
            perUnit * at.chi.cos * at.Lambda.sin, at, cosPhi};
  }

  /// A point on the sphere as a vector: its height over the sphere's equator, and its parts along
  /// and across the meridian of origin.
  struct Vector {
    SineCosine chi;
    double along, across;
    bool origin;
  };
  /// The vector of a grid point, at the angular distance d from the origin on the sphere. With
  /// q = tan(d/2) = r/(2·k0·R), sin d/r = 2/((1 + q²)·2·k0·R) needs no division by r.
  GEOMATH_INLINE Vector ToSphere(double north, double east) const {
    const double x = east / diameter_, y = north / diameter_;
    const double q2 = x * x + y * y;
    const double unit = 2 / (1 + q2), cosD = (1 - q2) / (1 + q2);
    const double across = unit * x;
    const double along = cosChi0_ * cosD - sinChi0_ * unit * y;
    const double cosChi = std::sqrt(along * along + across * across);
    return {{cosD * sinChi0_ + unit * y * cosChi0_, cosChi}, along, across, q2 == 0};
  }
  /// Latitude and longitude; those of the origin themselves for (0, 0).
  template <class Math>
  GEOMATH_INLINE void Unproject(const Vector& v, double& phi, double& lambda) const {
    const double geodetic = sphere_.Geodetic<Math>(v.chi);
    phi = v.origin ? phi0_ : geodetic;
    lambda = lambda0_ + Math::Atan2(v.across, v.along) / sphere_.alpha;
  }

  /// Point scale, and convergence in radians, positive east of the meridian of origin in the
  /// northern hemisphere. Kept: the scale takes the prime-vertical radius of the origin latitude; it
  /// is exact there and up to 0.34 % away from it (the radius of the poles against that of the
  /// equator).
  PointFactors Factors(const Image& image) const;
  PointFactors Factors(const Vector& vector, double phi) const;

  /// The points for which columns hold: on the Earth's ellipsoids, latitudes short of the poles.
  GEOMATH_INLINE bool ServesForward(double phi, double lambda) const {
    const bool latitude = std::abs(phi) < kHalfPi;
    const bool longitude = std::abs(lambda - lambda0_) < simd::kMaxAngle / 2;  // before α ≤ 1.004
    return latitude & longitude & servesColumns_;
  }
  GEOMATH_INLINE bool ServesInverse(double north, double east) const {
    const bool northing = std::abs(north) < kLargestCoordinate;
    const bool easting = std::abs(east) < kLargestCoordinate;
    return northing & easting & servesColumns_;
  }

 private:
  template <class Real>
  GEOMATH_INLINE Real Denominator(const SpherePointOf<Real>& at) const {
    return 1 + sinChi0_ * at.chi.sin + cosChi0_ * at.chi.cos * at.Lambda.cos;
  }
  PointFactors Factors(const SpherePoint& at, double cosPhi) const;

  ConformalSphere sphere_;
  double phi0_ = 0, lambda0_ = 0;
  double sinChi0_ = 0, cosChi0_ = 1;
  double diameter_ = 0;       // 2·k0·R, metres
  double scaleAtOrigin_ = 0;  // 2·k0·n·R/ν0
  bool servesColumns_ = false;
};

}  // namespace zel_cs::geomath
