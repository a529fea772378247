#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/conformal_derivatives.h"
#include "geomath/proj/methods/math/multiple_angles.h"
#include "geomath/proj/methods/math/state_plane_1927.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// TTM27Proj. Symbols of Claire 1968: S1, Sm distances from the central meridian on the ellipsoid and
/// on its map of scale 1, metres; Sg the same on the grid, feet; φ1, φ2 footpoint latitudes; ω
/// rectifying latitude; Δ arc-seconds east of the central meridian; ε kClarke1866E2.
struct Tm27Formulas {
  double L1, L2, L34, L5;
  double L6;            // of (Sg/10⁵ feet)³, per cubic foot
  double feetPerMetre;  // of Sm, at the scale L5
  ConformalDerivatives derivatives;

  /// A latitude with its sine and cosine.
  struct Point {
    double phi, sin, cos;
  };
  /// What scale and convergence follow from.
  struct Place {
    double gridFeet, delta;
    Point at;
    double foot;  // latitude
  };

  /// Forward and Inverse return the place of the point.
  template <class Math>
  GEOMATH_INLINE Place Forward(double& b, double& l) const {
    Point at{b, 0, 0};
    Math::SinCos(b, at.sin, at.cos);
    const double delta = l * kArcSecondsPerRad + L2;
    const double w2 = W2(at.sin), w = Math::Sqrt(w2), perCosine = 1 / (at.cos * w);  // times 1/w
    const double arc = kMetresPerArcSecond * Add(kArc, delta);
    const double Sm = Add(kDistance, arc * (at.cos * at.cos * perCosine));
    const double gridFeet = Add(L6, Sm * feetPerMetre);
    const Point first = Moved<Math>(at, FootpointShift(w2, at.sin * w * perCosine, Sm));
    const Point foot = Moved<Math>(at, FootpointShift(first, Sm));
    const double omega = RectifyingLatitude1927(foot.phi, foot.sin, foot.cos);
    b = kFeetPerRectifyingSecond * L5 * (omega - L34) * kUsSurveyFoot;
    l = (L1 + gridFeet) * kUsSurveyFoot;
    return {gridFeet, delta, at, foot.phi};
  }

  template <class Math>
  GEOMATH_INLINE Place Inverse(double& n, double& e) const {
    const double gridFeet = e * (1 / kUsSurveyFoot) - L1;
    const double Sm = Remove(L6, gridFeet) / feetPerMetre;
    const double omega = RectifyingSeconds(n);
    Point rectifying{omega * kRadPerArcSecond, 0, 0};
    Math::SinCos(rectifying.phi, rectifying.sin, rectifying.cos);
    const double foot = LatitudeFromRectifying1927(omega, rectifying.sin, rectifying.cos);
    const double toFoot = foot - rectifying.phi;
    const double shift = FootpointShift(Moved<Math>(rectifying, toFoot), Sm);
    const Point at = Moved<Math>(rectifying, toFoot - shift);
    const double arc = Remove(kDistance, Sm) * Math::Sqrt(W2(at.sin)) / at.cos;
    const double delta = Remove(kArc, arc * (1 / kMetresPerArcSecond));
    n = foot - shift;
    e = (delta - L2) * kRadPerArcSecond;
    return {gridFeet, delta, {n, at.sin, at.cos}, foot};
  }

  template <class Math>
  GEOMATH_INLINE void Factors(const Place& p, double& scale, double& convergence) const {
    const double curvature = 1 + kClarke1866Ep2 * (p.at.cos * p.at.cos);
    const double x = curvature * p.gridFeet / (1e6 * L5);
    const Point mid = Moved<Math>(p.at, (p.foot - p.at.phi) / 2);
    const double cubic = kConvergenceCubic * (p.delta * p.delta) * mid.sin * (mid.cos * mid.cos);
    const double seconds = p.delta * (mid.sin + cubic);
    scale = L5 * (1 + x * x / kScaleRadius2);
    convergence = seconds * kRadPerArcSecond;
  }

  template <class Math>
  GEOMATH_INLINE void Differentiate(double& b, double& l, double& northL, double& eastL) const {
    const Place place = Forward<Math>(b, l);
    double scale, convergence;
    Factors<Math>(place, scale, convergence);
    derivatives.At<Math>(place.at.sin, place.at.cos, scale, convergence, b, l, northL, eastL);
  }

  // Where the footpoint is near, and its sine and cosine are had by the addition theorems.
  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    constexpr double kFarthest = 0.1;  // radians: 0.0026 to the footpoint at most
    const bool zone = std::abs(l + L2 * kRadPerArcSecond) < kFarthest;
    return zone & (std::abs(b) <= kHalfPi);
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    // 0.0026 radians from the footpoint at most, and as many from there to the rectifying latitude.
    constexpr double kFarthestFeet = 8e5, kFarthestSeconds = 1.3 * kArcSecondsPerRad;
    const bool zone = std::abs(e * (1 / kUsSurveyFoot) - L1) < kFarthestFeet;
    const bool latitude = std::abs(RectifyingSeconds(n)) < kFarthestSeconds;
    return zone & latitude & (L5 > kSmallestScale) & (std::abs(L6) < kLargestCubic);
  }

 private:
  static constexpr double kMetresPerArcSecond = 30.92241724;  // of the equator
  static constexpr double kFootpoint = 2.552381e-9;  // ρ″/(2·a²·(1 − ε)), per square metre
  static constexpr double kScaleRadius2 = 881.749162;      // 2·a²/(1 − ε), (10⁶ feet)²
  static constexpr double kConvergenceCubic = 1.9587e-12;  // sin²1″/12
  static constexpr double kArc = -3.9174e-12;              // arc to sine, of (Δ/10⁴)³
  static constexpr double kDistance = 4.0831e-15;          // of (S1/10⁵ metres)³
  static constexpr double kSmallestScale = 0.9,
                          kLargestCubic = 1e-14;  // of what ServesInverse bounds

  // The small corrections of the method: x + c·x³, and the x for which that is y, by two
  // substitutions. Publications often stop after the first, which moves the result by 0.15 mm at 1°
  // from the meridian and 5 mm at 2°.
  static GEOMATH_INLINE double Add(double c, double x) { return x + c * (x * x * x); }
  static GEOMATH_INLINE double Remove(double c, double y) {
    const double x = y - c * (y * y * y);
    return y - c * (x * x * x);
  }

  static GEOMATH_INLINE double W2(double sinPhi) { return 1 - kClarke1866E2 * (sinPhi * sinPhi); }

  GEOMATH_INLINE double RectifyingSeconds(double n) const {
    return L34 + kRectifyingSecondsPerFoot / (kUsSurveyFoot * L5) * n;
  }

  // What the foot of the perpendicular on the central meridian lies beyond a latitude, radians.
  static GEOMATH_INLINE double FootpointShift(double w2, double tangent, double Sm) {
    return kFootpoint * kRadPerArcSecond * (Sm * Sm) * (w2 * w2) * tangent;
  }
  static GEOMATH_INLINE double FootpointShift(const Point& from, double Sm) {
    return FootpointShift(W2(from.sin), from.sin / from.cos, Sm);
  }

  template <class Math>
  static GEOMATH_INLINE Point Moved(const Point& from, double shift) {
    Point to{from.phi + shift, from.sin, from.cos};
    if constexpr (Math::kColumns)
      AddTinyAngle(shift, to.sin, to.cos);
    else
      Math::SinCos(to.phi, to.sin, to.cos);
    return to;
  }
};

}  // namespace zel_cs::geomath
