#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/column_range.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/simd/elementary.h"

// The two aspects of TSterProj. Equation numbers are Snyder 1987. Symbols there and here:
//   χ χ1  chi chi1  conformal latitude, that of the origin     A  his factor of the oblique aspect
//   ρ     rho       distance from the pole on the map
namespace zel_cs::geomath {

struct SterObliqueFormulas {
  ConformalLatitude latitude;
  SineCosine chi1;
  double obliqueA;  // 2·a·k0·m1/cos χ1, metres
  double lambda0, fEast, fNorth;

  /// What the scale follows from.
  template <class Real>
  struct ImageOf {
    Real sinPhi, cosPhi, cosChi, A;
  };
  using Image = ImageOf<double>;

  template <class Math>
  GEOMATH_INLINE ImageOf<typename Math::Real> Forward(typename Math::Real& b,
                                                      typename Math::Real& l) const {
    using Real = typename Math::Real;
    Real sinPhi, cosPhi, sinDelta, cosDelta;
    Math::SinCos(b, sinPhi, cosPhi);
    Math::SinCos(FoldTurn(l - lambda0), sinDelta, cosDelta);
    // Kept: a latitude beyond a pole counts by its sine, as its supplement.
    const SineCosineOf<Real> chi = latitude.FromGeodetic<Math>(sinPhi, Math::Abs(cosPhi));
    const Real A = AtCosines(chi, chi.cos * cosDelta);
    b = fNorth + A * (chi1.cos * chi.sin - chi1.sin * chi.cos * cosDelta);  // 21-25
    l = fEast + A * chi.cos * sinDelta;                                     // 21-24
    return {sinPhi, cosPhi, chi.cos, A};
  }

  // The point on the conformal sphere as a vector: sine of its latitude, and its parts along and
  // across the meridian of origin. With q = tan(ce/2), 21-38, the sine and cosine of ce are
  // rational. Returns its cos χ and A.
  template <class Math>
  GEOMATH_INLINE Image Inverse(double& n, double& e) const {
    const double x = (e - fEast) / obliqueA, y = (n - fNorth) / obliqueA;
    const double q2 = x * x + y * y;
    const double cosCe = (1 - q2) / (1 + q2), unit = 2 / (1 + q2);
    const double across = unit * x;
    const double along = chi1.cos * cosCe - chi1.sin * unit * y;
    const SineCosine chi{cosCe * chi1.sin + unit * y * chi1.cos,  // 20-14
                         std::sqrt(along * along + across * across)};
    n = latitude.ToGeodetic<Math>(chi);
    const double angle = Math::Atan(across / along);  // 20-15, Kept: not atan2
    e = lambda0 + (across == 0 ? 0.0 : angle);
    return {0, 0, chi.cos, AtCosines(chi, std::abs(along))};  // at the folded longitude
  }

  /// Short of the poles by more than what a sine of 1 hides.
  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool inside = std::abs(b) < kHalfPi - 1e-7;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return inside & longitude & latitude.ServesColumns();
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    const bool northing = std::abs(n - fNorth) < kLargestCoordinate;
    const bool easting = std::abs(e - fEast) < kLargestCoordinate;
    return northing & easting & latitude.ServesColumns();
  }

 private:
  template <class Real>
  GEOMATH_INLINE Real AtCosines(const SineCosineOf<Real>& chi, Real along) const {
    return obliqueA / (1 + chi1.sin * chi.sin + chi1.cos * along);  // 21-27
  }
};

/// The south polar aspect is the north polar one of the negated latitudes and longitudes, negated.
struct SterPolarFormulas {
  static constexpr double kPolarCosine = 1e-12;  // points below it are the pole

  ConformalLatitude latitude;
  CosinePowerSeries series;  // conformal to geodetic latitude
  double sign;               // −1 in the south polar aspect
  double polarRadius;        // 2·a·k0/√((1 + e)^(1 + e)·(1 − e)^(1 − e)), metres
  double lambda0, fEast, fNorth;

  /// What the scale follows from; the inverse leaves the latitude out.
  template <class Real>
  struct ImageOf {
    Real sinPhi, cosPhi, rho;
  };
  using Image = ImageOf<double>;

  template <class Math>
  GEOMATH_INLINE ImageOf<typename Math::Real> Forward(typename Math::Real& b,
                                                      typename Math::Real& l) const {
    using Real = typename Math::Real;
    Real sinPhi, cosPhi, sinDelta, cosDelta;
    Math::SinCos(sign * b, sinPhi, cosPhi);
    Math::SinCos(sign * FoldTurn(l - lambda0), sinDelta, cosDelta);
    const SineCosineOf<Real> chi = latitude.FromGeodetic<Math>(sinPhi, cosPhi);
    const bool north = chi.sin > 0, pole = cosPhi <= kPolarCosine;
    const Real numerator = north ? chi.cos : 1 - chi.sin;
    const Real denominator = north ? 1 + chi.sin : chi.cos;
    const Real away = polarRadius * (numerator / denominator);  // 21-33
    const Real rho = pole ? 0.0 : away;
    b = fNorth - sign * rho * cosDelta;  // 21-31
    l = fEast + sign * rho * sinDelta;   // 21-30
    return {sinPhi, cosPhi, rho};
  }

  template <class Math>
  GEOMATH_INLINE Image Inverse(double& n, double& e) const {
    const double x = sign * (e - fEast), y = sign * (n - fNorth);
    const double rho = std::sqrt(x * x + y * y);
    const double t = rho / polarRadius;                                              // 21-39
    const double latitudeAway = series.Evaluate<Math>(kHalfPi - 2 * Math::Atan(t));  // 7-13, 3-5
    const double longitudeAway = Math::Atan2(x, -y);                                 // 20-16
    const bool east = x == 0, middle = y == 0, pole = east & middle;
    n = sign * (pole ? kHalfPi : latitudeAway);
    e = lambda0 + sign * (pole ? 0.0 : longitudeAway);
    return {0, 0, rho};
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool inside = std::abs(b) <= kHalfPi;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return inside & longitude & latitude.ServesColumns();
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    const bool northing = std::abs(n - fNorth) < kLargestCoordinate;
    const bool easting = std::abs(e - fEast) < kLargestCoordinate;
    return northing & easting & latitude.ServesColumns();
  }
};

}  // namespace zel_cs::geomath
