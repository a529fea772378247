#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/formulas/conformal_derivatives.h"
#include "geomath/proj/methods/math/state_plane_1927.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// TLC27Proj. Symbols of Claire 1968: S true distance along the meridian from a point to the central
/// parallel, feet, positive south of it; s the same on the map; R map radius, feet; θ angle at the
/// apex; x y grid coordinates, feet; ω rectifying latitude; ε kClarke1866E2.
struct Lc27Formulas {
  double L1, L2, L3, L4, L5, L6, L78;
  double c2, c3, c4;  // L9, L10 and L11 of the radius series, per foot² … foot⁴
  ConformalDerivatives derivatives;

  /// What scale and convergence follow from.
  struct Place {
    double R, theta, sinPhi, cosPhi;
  };

  /// Forward and Inverse return the place of the point.
  template <class Math>
  GEOMATH_INLINE Place Forward(double& b, double& l) const {
    Place at;
    Math::SinCos(b, at.sinPhi, at.cosPhi);
    const double delta = l * kArcSecondsPerRad + L2;
    const double omega = RectifyingLatitude1927(b, at.sinPhi, at.cosPhi);
    const double S = kFeetPerRectifyingSecond * (L78 - omega);
    at.R = L3 + L5 * S * Stretch(S);
    at.theta = L6 * delta * kRadPerArcSecond;
    double sinHalf, cosHalf;  // 1 − cos θ = 2 sin²(θ/2), without loss at small angles
    Math::SinCos(0.5 * at.theta, sinHalf, cosHalf);
    b = (L4 - at.R + at.R * (2 * sinHalf * sinHalf)) * kUsSurveyFoot;
    l = (L1 + at.R * (2 * sinHalf * cosHalf)) * kUsSurveyFoot;
    return at;
  }

  template <class Math>
  GEOMATH_INLINE Place Inverse(double& n, double& e) const {
    Place at;
    const double x = e * (1 / kUsSurveyFoot) - L1, y = L4 - n * (1 / kUsSurveyFoot);
    at.theta = Math::Atan(x / y);
    at.R = Math::CopySign(Math::Sqrt(x * x + y * y), y);
    const double s = (y - L3 + x * x / (at.R + y)) / L5;  // R·(1 − cos θ) = R − y
    double S = s / Stretch(s);
    S = s / Stretch(S);
    S = s / Stretch(S);
    const double omega = L78 - kRectifyingSecondsPerFoot * S;
    double sinOmega, cosOmega;
    Math::SinCos(omega * kRadPerArcSecond, sinOmega, cosOmega);
    const double phi = LatitudeFromRectifying1927(omega, sinOmega, cosOmega);
    Math::SinCos(phi, at.sinPhi, at.cosPhi);
    n = phi;
    e = (at.theta * kArcSecondsPerRad / L6 - L2) * kRadPerArcSecond;
    return at;
  }

  template <class Math>
  GEOMATH_INLINE void Factors(const Place& at, double& scale, double& convergence) const {
    constexpr double kClarke1866Feet = 20925832.16;  // semi-major axis
    const double w2 = 1 - kClarke1866E2 * (at.sinPhi * at.sinPhi);
    scale = L6 * at.R * Math::Sqrt(w2) / (kClarke1866Feet * at.cosPhi);
    convergence = at.theta;
  }

  template <class Math>
  GEOMATH_INLINE void Differentiate(double& b, double& l, double& northL, double& eastL) const {
    const Place at = Forward<Math>(b, l);
    double scale, convergence;
    Factors<Math>(at, scale, convergence);
    derivatives.At<Math>(at.sinPhi, at.cosPhi, scale, convergence, b, l, northL, eastL);
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool turn = std::abs(L6 * (l + L2 * kRadPerArcSecond)) < simd::kMaxAngle;
    return turn & (std::abs(b) < simd::kMaxAngle);
  }
  // South of the apex, where the series of the radius ends within the angles of the columns.
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    constexpr double kNearest = 1e3, kFarthest = 5e7;  // feet
    const double x = e * (1 / kUsSurveyFoot) - L1, y = L4 - n * (1 / kUsSurveyFoot);
    return (y > kNearest) & (y < kFarthest) & (std::abs(x) < kFarthest);
  }

 private:
  // Map distance over true distance of the radius series, before the scale L5.
  GEOMATH_INLINE double Stretch(double S) const { return 1 + S * S * (c2 - c3 * S + c4 * (S * S)); }
};

}  // namespace zel_cs::geomath
