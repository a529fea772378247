#pragma once

#include <cmath>

#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/meridian_series.h"
#include "geomath/proj/methods/math/multiple_angles.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/latitude_dual.h"

namespace zel_cs::geomath {

/// TTMProj with its constants prepared. Terms I to XIIA are those of the Ordnance Survey guide,
/// annexe C; equation numbers are its own.
///   λ0 lambda0   central meridian    ν nu, ρ rho  scaled radii    η² eta2 = ν/ρ − 1
///   φ0 phi0      origin              M            scaled arc from φ0
struct TmFormulas {
  static constexpr double kFootpointTolerance = 0.001;  // metres of arc
  /// Corrections of the footpoint after which every point that ServesInverse lets through is
  /// within the tolerance.
  static constexpr int kFootpointCorrections = 4;

  double lambda0, phi0, fEast, fNorth;
  double e2;
  double invAxes2;  // 1/(1 − e²)
  double aK0, bK0;  // scaled semi-axes, metres
  double invAK0;
  double m1;              // arc of a unit of latitude over bK0
  CosinePowerSeries arc;  // adds the terms in sin 2φ, sin 4φ, sin 6φ
  double arcTerms0;       // those of φ0
  double maxNorthing;     // from φ0, metres, below which the corrections suffice

  /// A latitude on the way to the footpoint, and the arc that it still lacks, metres.
  struct Footpoint {
    double phi, sinPhi, cosPhi, rest;

    GEOMATH_INLINE bool Settled() const { return !(std::abs(rest) >= kFootpointTolerance); }
  };

  /// C3 with its products as differences, sin(φ − φ0)·cos(φ + φ0) = (sin 2φ − sin 2φ0)/2 and so on.
  template <class Real>
  GEOMATH_INLINE Real ArcFromOrigin(Real phi, Real sinPhi, Real cosPhi) const {
    return bK0 * (arc(m1 * (phi - phi0), sinPhi, cosPhi) - arcTerms0);
  }

  template <class Math>
  GEOMATH_INLINE void Forward(typename Math::Real& b, typename Math::Real& l) const {
    using Latitude = simd::LatitudeMath<Math>;
    using Real = typename Latitude::Real;  // all but d
    const Real phi = Latitude::Of(b);
    Real s, c;
    Latitude::SinCos(phi, s, c);
    const Real t = s / c, t2 = t * t, t4 = t2 * t2, c2 = c * c, c3 = c2 * c, c5 = c3 * c2;
    const Real w2 = 1 - e2 * (s * s);
    const Real nu = aK0 / Latitude::Sqrt(w2);  // C1
    const Real nuOverRho = w2 * invAxes2;      // C2, from its first part
    const Real eta2 = nuOverRho - 1;           // C2, second part

    const Real I = ArcFromOrigin(phi, s, c) + fNorth;
    const Real II = 1.0 / 2 * nu * s * c;
    const Real III = 1.0 / 24 * nu * s * c3 * (5 - t2 + 9 * eta2);
    const Real IIIA = 1.0 / 720 * nu * s * c5 * (61 - 58 * t2 + t4);
    const Real IV = nu * c;
    const Real V = 1.0 / 6 * nu * c3 * (nuOverRho - t2);
    const Real VI = 1.0 / 120 * nu * c5 * (5 - 18 * t2 + t4 + 14 * eta2 - 58 * t2 * eta2);

    const typename Math::Real d = FoldTurn(l - lambda0), d2 = d * d;
    b = I + d2 * (II + d2 * (III + d2 * IIIA));  // C4
    l = fEast + d * (IV + d2 * (V + d2 * VI));   // C5
  }

  template <class Math>
  GEOMATH_INLINE Footpoint At(double phi, double northing) const {
    double s, c;
    Math::SinCos(phi, s, c);
    return {phi, s, c, northing - ArcFromOrigin(phi, s, c)};
  }

  /// C6.
  template <class Math>
  GEOMATH_INLINE Footpoint FirstFootpoint(double northing) const {
    return At<Math>(northing / aK0 + phi0, northing);
  }

  /// C7 for an arc of `rest` metres below 0.03 of the radius, without another sine. None changes
  /// no bit.
  GEOMATH_INLINE Footpoint Corrected(const Footpoint& f, double rest, double northing) const {
    const double delta = rest * invAK0, phi = f.phi + delta;
    double s = f.sinPhi, c = f.cosPhi;
    AddSmallAngle<-1>(delta, s, c);
    return {phi, s, c, northing - ArcFromOrigin(phi, s, c)};
  }

  /// What follows the footpoint; `n` and `e` as in Inverse.
  GEOMATH_INLINE void FromFootpoint(const Footpoint& f, double& n, double& e) const {
    const double s = f.sinPhi, invC = 1 / f.cosPhi;
    const double t = s * invC, t2 = t * t, t4 = t2 * t2, t6 = t4 * t2;
    const double w2 = 1 - e2 * (s * s), nuOverRho = w2 * invAxes2, eta2 = nuOverRho - 1;
    const double invNu = std::sqrt(w2) * invAK0, invNu2 = invNu * invNu;
    // The guide's terms without their powers of 1/ν, which go with d.
    const double VII = 1.0 / 2 * t * nuOverRho;
    const double VIII = 1.0 / 24 * t * nuOverRho * (5 + 3 * t2 + eta2 - 9 * t2 * eta2);
    const double IX = 1.0 / 720 * t * nuOverRho * (61 + 90 * t2 + 45 * t4);
    const double XI = 1.0 / 6 * (nuOverRho + 2 * t2);
    const double XII = 1.0 / 120 * (5 + 28 * t2 + 24 * t4);
    const double XIIA = 1.0 / 5040 * (61 + 662 * t2 + 1320 * t4 + 720 * t6);

    const double d = e - fEast, q2 = d * d * invNu2;
    n = f.phi - q2 * (VII - q2 * (VIII - q2 * IX));                             // C8
    e = lambda0 + d * invNu * invC * (1 - q2 * (XI - q2 * (XII - q2 * XIIA)));  // C9
  }

  template <class Math>
  GEOMATH_INLINE void Inverse(double& n, double& e) const {
    const double northing = n - fNorth;
    Footpoint f = FirstFootpoint<Math>(northing);
    for (int i = 0; i < kFootpointCorrections; ++i)
      f = Corrected(f, f.Settled() ? 0.0 : f.rest, northing);
    FromFootpoint(f, n, e);
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < simd::kMaxAngle;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return latitude & longitude;
  }

  GEOMATH_INLINE bool ServesInverse(double n, double) const {
    return std::abs(n - fNorth) < maxNorthing;
  }
};

}  // namespace zel_cs::geomath
