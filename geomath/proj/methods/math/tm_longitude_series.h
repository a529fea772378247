#pragma once

#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// The longitude series of the ellipsoidal transverse Mercator as Stem 1989 (NOAA Manual NOS NGS 5,
/// pp. 32-37) groups them: everything but the meridian arc, per unit of the scaled prime-vertical
/// radius R. Inline, since they are the inner part of every UTM conversion. All angles are radians.
///
/// The latitude enters as t = tan φ and η² = e′²·cos²φ; in the inverse it is the footpoint's.
template <class Real>
struct TmLatitudeOf {
  GEOMATH_INLINE TmLatitudeOf(Real sinPhi, Real cosPhi, double ep2)
      : t(sinPhi / cosPhi), t2(t * t), t4(t2 * t2), t6(t4 * t2), eta2(ep2 * (cosPhi * cosPhi)) {}

  Real t, t2, t4, t6, eta2;
};
using TmLatitude = TmLatitudeOf<double>;

/// Northing beyond the arc of the latitude, and easting from the meridian, both over R.
template <class Real>
struct TmOffset {
  Real north, east;
};

/// The offset of a point with L = Δλ·cos φ, to L⁷.
template <class Real>
GEOMATH_INLINE TmOffset<Real> TmForwardSeries(const TmLatitudeOf<Real>& at, Real L) {
  const auto& [t, t2, t4, t6, eta2] = at;
  const Real L2 = L * L;
  const Real A4 = (5 - t2 + eta2 * (9 + 4 * eta2)) / 12;
  const Real A6 = (61 - 58 * t2 + t4 + eta2 * (270 - 330 * t2)) / 360;
  const Real A3 = (1 - t2 + eta2) / 6;
  const Real A5 = (5 - 18 * t2 + t4 + eta2 * (14 - 58 * t2)) / 120;
  const Real A7 = (61 - 479 * t2 + 179 * t4 - t6) / 5040;
  return {.north = t * L2 / 2 * (1 + L2 * (A4 + L2 * A6)),
          .east = L * (1 + L2 * (A3 + L2 * (A5 + L2 * A7)))};
}

/// What takes a footpoint to its point.
struct TmFootpointStep {
  double latitude;   // radians, to add to the footpoint latitude
  double longitude;  // longitude difference times the cosine of the footpoint latitude
};

/// The step for Q = ΔE/R, to Q⁷. `eta2t4` is the coefficient of η²t⁴ in the sixth power of the
/// latitude, on which two grids differ: 90 in Stem 1989, 60 in TUTMProj.
GEOMATH_INLINE TmFootpointStep TmInverseSeries(const TmLatitude& at, double Q, double eta2t4) {
  const auto& [t, t2, t4, t6, eta2] = at;
  const double Q2 = Q * Q;
  const double B2 = t * (1 + eta2) / 2;
  const double B4 = (5 + 3 * t2 + eta2 - 4 * (eta2 * eta2) - 9 * t2 * eta2) / 12;
  const double B6 = (61 + 90 * t2 + 45 * t4 + eta2 * (46 - 252 * t2 - eta2t4 * t4)) / 360;
  const double B3 = (1 + 2 * t2 + eta2) / 6;
  const double B5 = (5 + 28 * t2 + 24 * t4 + eta2 * (6 + 8 * t2)) / 120;
  const double B7 = (61 + 662 * t2 + 1320 * t4 + 720 * t6) / 5040;
  return {.latitude = -B2 * Q2 * (1 - Q2 * (B4 - Q2 * B6)),
          .longitude = Q * (1 - Q2 * (B3 - Q2 * (B5 - Q2 * B7)))};
}

/// Meridian convergence from L, positive east of the meridian in the northern hemisphere.
GEOMATH_INLINE double TmConvergence(const TmLatitude& at, double L) {
  const double eta2 = at.eta2, L2 = L * L;
  const double C3 = (1 + 3 * eta2 + 2 * (eta2 * eta2)) / 3, C5 = (2 - at.t2) / 15;
  return at.t * L * (1 + L2 * (C3 + L2 * C5));
}

/// Point scale over the scale on the meridian, from L.
GEOMATH_INLINE double TmScale(const TmLatitude& at, double L) {
  const double eta2 = at.eta2, L2 = L * L;
  return 1 + (1 + eta2) * L2 / 2 * (1 + L2 * (5 - 4 * at.t2 + eta2 * (9 - 24 * at.t2)) / 12);
}

/// The same two from Q at the footpoint.
GEOMATH_INLINE double TmConvergenceFromFootpoint(const TmLatitude& at, double Q) {
  const double t2 = at.t2, eta2 = at.eta2, Q2 = Q * Q;
  const double D3 = (1 + t2 - eta2 - 2 * (eta2 * eta2)) / 3, D5 = (2 + 5 * t2 + 3 * at.t4) / 15;
  return at.t * Q * (1 - Q2 * (D3 - Q2 * D5));
}

GEOMATH_INLINE double TmScaleFromFootpoint(const TmLatitude& at, double Q) {
  const double Q2 = Q * Q;
  return 1 + (1 + at.eta2) * Q2 / 2 * (1 + (1 + 5 * at.eta2) * Q2 / 12);
}

}  // namespace zel_cs::geomath
