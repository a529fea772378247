#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/proj/methods/math/multiple_angles.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

/// TAlbersEAConicProj with its constants prepared. Equation numbers are Snyder 1987; q, n, C, ρ, θ
/// are his, g the sign of n.
struct AlbersFormulas {
  double a, e, e2;
  double lambda0, fEast, fNorth;
  double n;            // cone constant
  double C;            // m1² + n·q1
  double rho0;         // radius of the origin latitude, metres
  double qPole;        // q at the north pole
  double authalic[3];  // authalic to geodetic latitude, of sin 2β …
  bool nearSphere;     // an ellipsoid of the Earth's flattening

  /// 3-12, its logarithm as an inverse hyperbolic tangent; 2·sin φ on the sphere.
  template <class Math>
  GEOMATH_INLINE typename Math::Real AuthalicQ(typename Math::Real s) const {
    using Real = typename Math::Real;
    Real arc = ArtanhOverE(s, e2);
    if constexpr (!Math::kColumns)
      if (!nearSphere) arc = e > 0 ? Atanh(e * s) / e : s;
    return (1 - e2) * (s / (1 - e2 * (s * s)) + arc);
  }

  /// False where the radicand of ρ is negative.
  template <class Math>
  GEOMATH_INLINE bool Forward(typename Math::Real& b, typename Math::Real& l) const {
    using Real = typename Math::Real;
    Real sinPhi, cosPhi, sinTheta, cosTheta;
    Math::SinCos(b, sinPhi, cosPhi);
    Math::SinCos(n * FoldTurn(l - lambda0), sinTheta, cosTheta);  // 14-4
    const Real radicand = C - n * AuthalicQ<Math>(sinPhi);
    const Real rho = a * Math::Sqrt(radicand) / n;  // 14-12
    b = fNorth + rho0 - rho * cosTheta;             // 14-2
    l = fEast + rho * sinTheta;                     // 14-1
    return !(radicand < 0);
  }

  /// False where no latitude has such a parallel.
  template <class Math>
  GEOMATH_INLINE bool Inverse(double& north, double& east) const {
    const double x = east - fEast, y = rho0 - (north - fNorth), g = std::copysign(1.0, n);
    const double q = Q(x, y);
    double phi = 0;
    bool found = true;
    if constexpr (Math::kColumns)
      phi = NewtonStep<Math>(q, FirstLatitude<Math>(q)).phi;
    else
      found = LatitudeFromQ(q, phi);
    north = phi;
    east = lambda0 + Math::Atan2(g * x, g * y) / n;  // 14-11, 14-9
    return found;
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) <= kHalfPi, cone = std::abs(n) <= 1;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return latitude & longitude & cone & nearSphere;
  }
  GEOMATH_INLINE bool ServesInverse(double north, double east) const {
    constexpr double kShortOfPole = 1 - 1e-12;
    const double q = Q(east - fEast, rho0 - (north - fNorth));
    const bool latitude = std::abs(q) < kShortOfPole * qPole;
    return latitude & nearSphere;
  }

 private:
  struct Latitude {
    double phi, northward;
  };

  // 14-19, with the square of 14-10.
  GEOMATH_INLINE double Q(double x, double y) const {
    const double perUnit = n / a;
    return (C - (x * x + y * y) * (perUnit * perUnit)) / n;
  }

  // From the authalic latitude β = asin(q/q(π/2)) and its series to e⁶ (3-18), 1e-9 short on an
  // Earth ellipsoid.
  template <class Math>
  GEOMATH_INLINE double FirstLatitude(double q) const {
    const double s = q / qPole, c = std::sqrt((1 - s) * (1 + s));
    return Math::Atan2(s, c) + ClenshawSin(authalic, 2 * s * c, (c - s) * (c + s));
  }

  // Newton's rule (3-16), whose first step leaves less than the rounding of q on an Earth
  // ellipsoid, and what it moves the point northward.
  template <class Math>
  GEOMATH_INLINE Latitude NewtonStep(double q, double phi) const {
    double s, c;
    Math::SinCos(phi, s, c);
    const double w2 = 1 - e2 * (s * s);
    const double northward = w2 * w2 * (q - AuthalicQ<Math>(s)) / (2 * (1 - e2));
    return {phi + northward / c, northward};
  }

  // It ends by the step northward: dφ is proportional to 1/cos φ, and digits of φ near the poles
  // are not in q.
  bool LatitudeFromQ(double q, double& phi) const {
    constexpr double kPoleTolerance = 1e-14;  // of q
    constexpr double kLatitudeTolerance = 1e-14;
    constexpr int kMaxLatitudeSteps = 25;
    if (std::abs(std::abs(q) - qPole) <= kPoleTolerance) {
      phi = std::copysign(kHalfPi, q);
      return true;
    }
    if (!(std::abs(q) < qPole)) return false;
    phi = FirstLatitude<simd::Scalar>(q);
    for (int i = 0; i < kMaxLatitudeSteps; ++i) {
      const Latitude next = NewtonStep<simd::Scalar>(q, phi);
      phi = next.phi;
      if (std::abs(next.northward) < kLatitudeTolerance) return true;
    }
    return false;
  }
};

}  // namespace zel_cs::geomath
