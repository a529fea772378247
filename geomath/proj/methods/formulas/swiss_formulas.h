#pragma once

#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/conformal_sphere.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// TSwissProj with its constants prepared. Symbols of the source, there and here:
///   b l   spherical latitude and longitude      b̄ l̄   bBar lBar   in the oblique system
///   R α K b0   sphere.R, .alpha, .K, .chi0
/// Points of the sphere are kept as x, y, z: x towards the central meridian's equator, z the pole.
struct SwissFormulas {
  static constexpr double kCylinderEnd = 1e-15;  // of 1 − |sin b̄|

  ConformalSphere sphere;
  double lambda0, fEast, fNorth;
  double sinB0, cosB0;  // of the central point's spherical latitude

  /// Cosines of the latitude on the sphere and in the oblique system, from which the point scale
  /// follows, and whether the point has a place on the cylinder.
  template <class Real>
  struct PositionOf {
    Real cosB, cosBBar;
    bool exists;
  };
  using Position = PositionOf<double>;

  /// A point at an end of the cylinder becomes NaN in both coordinates.
  template <class Math>
  GEOMATH_INLINE PositionOf<typename Math::Real> Forward(typename Math::Real& b,
                                                         typename Math::Real& l) const {
    using Real = typename Math::Real;
    Real sinPhi, cosPhi, sinL, cosL;
    Math::SinCos(b, sinPhi, cosPhi);
    const auto [sinB, cosB] = sphere.Latitude<Math>(sinPhi, cosPhi);
    Math::SinCos(sphere.alpha * FoldTurn(l - lambda0), sinL, cosL);

    const Real meridian = cosB * cosL;
    const Real x = sinB0 * sinB + cosB0 * meridian, y = cosB * sinL;
    const Real sinBBar = cosB0 * sinB - sinB0 * meridian;
    const Real cosBBar = Math::Sqrt(x * x + y * y);
    const bool exists = !(1 - Math::Abs(sinBBar) < kCylinderEnd);

    const Real psiBar = SphericalIsometric<Math>({sinBBar, cosBBar});
    constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
    b = exists ? fNorth + sphere.R * psiBar : kNowhere;
    l = exists ? fEast + sphere.R * Math::Atan2(y, x) : kNowhere;
    return {cosB, cosBBar, exists};
  }

  template <class Math>
  GEOMATH_INLINE Position Inverse(double& n, double& e) const {
    double sinLBar, cosLBar;
    Math::SinCos((e - fEast) / sphere.R, sinLBar, cosLBar);
    const auto [sinBBar, cosBBar] = Gudermannian<Math>((n - fNorth) / sphere.R);

    const double meridian = cosBBar * cosLBar;
    const double x = cosB0 * meridian - sinB0 * sinBBar, y = cosBBar * sinLBar;
    const double sinB = cosB0 * sinBBar + sinB0 * meridian, cosB = std::sqrt(x * x + y * y);
    n = sphere.Geodetic<Math>({sinB, cosB});
    e = lambda0 + Math::Atan2(y, x) / sphere.alpha;
    return {cosB, cosBBar, true};
  }

  /// Not with a pole in the centre, whose constants are no numbers.
  GEOMATH_INLINE bool ServesColumns() const {
    return sphere.ServesColumns() && std::abs(sphere.chi0) < kHalfPi;
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < kHalfPi;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return ServesColumns() && latitude && longitude;
  }

  /// Short of the poles, where the logarithm meets its limits.
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    constexpr double kFarNorth = 30;  // isometric
    const bool north = std::abs((n - fNorth) / sphere.R) < kFarNorth;
    const bool east = std::abs((e - fEast) / sphere.R) < simd::kMaxAngle;
    return ServesColumns() && north && east;
  }
};

}  // namespace zel_cs::geomath
