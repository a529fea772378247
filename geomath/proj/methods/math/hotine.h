#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/math/hyperbolic.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// Hotine's oblique Mercator on plain numbers (Hotine 1946-47; Snyder 1987, pp. 66-75, alternate B;
/// EPSG Guidance Note 7-2, methods 9812 and 9815): the ellipsoid onto the aposphere, and that onto
/// a cylinder along the great circle through a centre at a given azimuth. Radians and metres.
/// Constants are prepared by the constructor; conversions are const and allocate nothing.
///
/// Round trips close to 2e-15 rad away from the poles. Nothing fails: the two ends of the cylinder,
/// where |U| = 1, give infinite coordinates.
///
/// Equation numbers are Snyder 1987. His Q, S, T, V, U are written with the isometric latitude ψ:
///   Q = E/t^B = exp(B·ψ + C), C = ln E;  S = sinh(B·ψ + C), T = cosh(B·ψ + C);  V = sin(B·Δλ)
/// and along = S·cos γ0 + V·sin γ0, across = S·sin γ0 − V·cos γ0, so that U = across/T and
///   T² = across² + reach²,  reach² = along² + cos²(B·Δλ).
/// Hence artanh U = ln((|across| + T)/reach) with the sign of across, without cancellation near
/// |U| = 1, and cos(B·u/A) = cos(B·Δλ)/reach, which takes the singularity at B·Δλ = ±π/2 out of the
/// point scale.
class Hotine {
 public:
  /// The central line: its azimuth α at the centre, the scale on it, and the centre.
  struct Line {
    double azimuth, k0, phiC, lambdaC;
  };
  /// Along the central line from the natural origin, and across it to its right.
  template <class Real>
  struct SkewOf {
    Real u, v;
  };
  using Skew = SkewOf<double>;
  struct Geographic {
    double phi, lambda;
  };

  Hotine() = default;
  Hotine(const Ellipsoid& ell, const Line& line);

  /// A position on both sides, and what takes the cylinder's scale to the point's.
  template <class Real>
  struct ProjectedOf {
    SkewOf<Real> skew;
    Real sinPhi, cosPhi, reach;
  };
  using Projected = ProjectedOf<double>;
  struct Unprojected {
    Geographic geographic;
    double reach;
  };

  /// The longitude difference is not folded. All of S, T, V and cos(B·Δλ) are taken 2Q-fold, which
  /// leaves both coordinates as they are and saves the division of 1/Q.
  template <class Math>
  GEOMATH_INLINE ProjectedOf<typename Math::Real> Project(typename Math::Real phi,
                                                          typename Math::Real lambda) const {
    using Real = typename Math::Real;
    Real sinPhi, cosPhi, V, cosTurn;
    Math::SinCos(phi, sinPhi, cosPhi);
    const Real Q = Math::Exp(B * latitude_.Isometric<Math>(sinPhi, cosPhi) + C);  // 9-25
    const Real S2 = Q * Q - 1, T2 = Q * Q + 1, twice = 2 * Q;                     // 9-26, 9-27
    Math::SinCos(B * (lambda - lambda0), V, cosTurn);                             // 9-28

    const Real V2 = twice * V, cosTurn2 = twice * cosTurn;
    const Real along = S2 * cosGamma0 + V2 * sinGamma0;
    const Real across = S2 * sinGamma0 - V2 * cosGamma0;
    const Real reachSq = along * along + cosTurn2 * cosTurn2;
    const Real sum = Math::Abs(across) + T2;
    const Real twiceArtanh = Math::CopySign(Math::Log(sum * sum / reachSq), across);
    const Real R = A / B;
    return {{R * Math::Atan2(along, cosTurn2), -R / 2 * twiceArtanh},  // 9-31, 9-30
            sinPhi,
            cosPhi,
            Math::Sqrt(reachSq) / twice};
  }

  /// The longitude is not folded. A point whose U′ rounds to ±1 is the pole, on the origin
  /// meridian; that is so within 7 cm of it.
  template <class Math>
  GEOMATH_INLINE Unprojected Unproject(Skew point) const {
    double V, cosTurn;
    const auto [S, T] = HyperbolicPair<Math>(-point.v * (B / A));  // 9-42 to 9-44
    Math::SinCos(point.u * (B / A), V, cosTurn);                   // 9-45

    const double up = V * cosGamma0 + S * sinGamma0;
    const double side = S * cosGamma0 - V * sinGamma0;
    const double U = up / T;  // 9-46
    const double reach = std::sqrt(side * side + cosTurn * cosTurn);
    const double psi = (Artanh<Math>(up, T, reach) - C) / B;  // 9-47
    const bool pole = std::abs(U) == 1;
    const double phi = latitude_.FromIsometric<Math>(psi);           // 7-9
    const double lambda = lambda0 - Math::Atan2(side, cosTurn) / B;  // 9-48
    return {{pole ? std::copysign(kHalfPi, U) : phi, pole ? lambda0 : lambda},
            pole ? cosTurn : reach};
  }

  /// Where the two hold in the functions of columns.
  GEOMATH_INLINE bool ServesForward(double phi, double lambda) const {
    const bool latitude = std::abs(phi) < kHalfPi;
    const bool longitude = std::abs(lambda - lambda0) < simd::kMaxAngle;
    return latitude & longitude & ServesColumns();
  }
  GEOMATH_INLINE bool ServesInverse(Skew point) const {
    constexpr double kFarAside = 30;  // isometric
    const bool aside = std::abs(point.v * (B / A)) < kFarAside;
    const bool ahead = std::abs(point.u * (B / A)) < simd::kMaxAngle;
    return aside & ahead & ServesColumns();
  }

  /// Point scale of the aposphere's upright cylinder, A·√(1 − e²·sin²φ)/(a·cos φ).
  double CylinderScale(double sinPhi, double cosPhi) const;

  double B = 1;          ///< ratio of aposphere to geodetic longitudes
  double A = 0;          ///< radius of the cylinder times B, metres
  double C = 0;          ///< constant of the isometric latitudes, ln Eh in Snyder's symbols
  double sinGamma0 = 0;  ///< azimuth of the central line on the aposphere's equator
  double cosGamma0 = 1;  ///< not negative
  double lambda0 = 0;    ///< longitude of the natural origin

 private:
  // The constants are numbers: columns do not carry NaN through.
  GEOMATH_INLINE bool ServesColumns() const {
    const bool isNumber = C - C == 0, hasAzimuth = cosGamma0 >= 0;
    return isNumber & hasAzimuth & latitude_.ServesColumns();
  }

  template <class Math>
  static GEOMATH_INLINE double Artanh(double across, double T, double reach) {
    return std::copysign(Math::Log((std::abs(across) + T) / reach), across);
  }

  double a_ = 0, e2_ = 0;
  ConformalLatitude latitude_;
};

}  // namespace zel_cs::geomath
