#pragma once

#include <cmath>
#include <limits>

#include "geomath/base/internal/fold_angle.h"
#include "geomath/proj/methods/math/hyperbolic.h"
#include "geomath/proj/methods/math/multiple_angles.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// TDenmarkTMProj with its constants prepared. Symbols of Poder and Engsager 1998:
///   Z  Gaussian latitude   Cn, Ce  northing and easting over Qn: on the Gaussian sphere's transverse
///   Mercator and, with dCn, dCe added, on the ellipsoid's   L  longitude difference
/// On the sphere sinh Ce is the tangent of η, the arc from the central meridian.
struct DenmarkTmFormulas {
  static constexpr double kOuterLimit = 2.623395162778;   // of |Ce|, about 150° at the equator
  static constexpr double kInnerLimit = 0.8349968168864;  // of |Ce|, 43° at the equator

  double lambda0, fEast;
  bool nearSphere;        // the sums are small angles
  double cbg[4], cgb[4];  // geodetic to Gaussian latitude and back, sin 2x … sin 8x
  double gtu[4], utg[4];  // Gaussian sphere to plane and back
  double Qn;              // scaled rectifying radius, metres
  double Zb;              // northing of the equator, metres

  template <class Real>
  static GEOMATH_INLINE Real SumSin2(const double (&c)[4], Real sinX, Real cosX) {
    return ClenshawSin(c, 2 * sinX * cosX, (cosX - sinX) * (cosX + sinX));
  }

  template <class Real>
  static GEOMATH_INLINE ComplexAngleOf<Real> Twice(const ComplexAngleOf<Real>& z) {
    return {2 * z.sin * z.cos, (z.cos - z.sin) * (z.cos + z.sin), 2 * z.sinh * z.cosh,
            1 + 2 * (z.sinh * z.sinh)};
  }

  /// Good to 1e-16 of one radian, which is what the sums and the results need; |imag| stays below 1.
  template <class Math>
  static GEOMATH_INLINE ComplexAngle AngleOf(double real, double imag) {
    double s, c;
    Math::SinCos(real, s, c);
    const auto [sinh, cosh] = HyperbolicPair<Math>(imag);
    return {s, c, sinh, cosh};
  }

  /// Sine and cosine of φ become those of the Gaussian latitude φ + dZ.
  template <class Math>
  GEOMATH_INLINE void ToGaussian(typename Math::Real phi, typename Math::Real& s,
                                 typename Math::Real& c) const {
    using Real = typename Math::Real;
    const Real dZ = SumSin2(cbg, s, c);
    if constexpr (!Math::kColumns)
      if (!nearSphere) return Math::SinCos(phi + dZ, s, c);
    AddSmallAngle<-1>(dZ, s, c);
  }

  /// The angle Cn0 + dCn, Ce0 + dCe.
  template <class Math>
  GEOMATH_INLINE ComplexAngle ToSphere(double Cn0, double Ce0) const {
    ComplexAngle at = AngleOf<Math>(Cn0, Ce0);
    const ComplexSum d = ClenshawSin(utg, Twice(at));
    if constexpr (!Math::kColumns)
      if (!nearSphere) return AngleOf<Math>(Cn0 + d.real, Ce0 + d.imag);
    AddSmallAngle<-1>(d.real, at.sin, at.cos);
    AddSmallAngle<1>(d.imag, at.sinh, at.cosh);
    return at;
  }

  /// False, both coordinates NaN, beyond the limit.
  template <class Math>
  GEOMATH_INLINE bool Forward(typename Math::Real& b, typename Math::Real& l) const {
    using Real = typename Math::Real;
    Real sinZ, cosZ, sinL, cosL;
    Math::SinCos(b, sinZ, cosZ);
    ToGaussian<Math>(b, sinZ, cosZ);
    Math::SinCos(FoldTurn(l - lambda0), sinL, cosL);
    const Real cosZCosL = cosZ * cosL;

    const Real perCosEta = 1 / Math::Sqrt(sinZ * sinZ + cosZCosL * cosZCosL);
    const Real sinCn = sinZ * perCosEta, cosCn = cosZCosL * perCosEta;
    const Real sinhCe = cosZ * sinL * perCosEta, coshCe = Math::Sqrt(1 + sinhCe * sinhCe);
    const Real Cn = Math::Atan2(sinZ, cosZCosL);
    const Real Ce = Math::CopySign(Math::Log(Math::Abs(sinhCe) + coshCe), sinhCe);

    const ComplexSumOf<Real> d =
        ClenshawSin(gtu, Twice(ComplexAngleOf<Real>{sinCn, cosCn, sinhCe, coshCe}));
    const Real e = Ce + d.imag, size = Math::Abs(e);
    const bool beyond = size > kOuterLimit;  // Kept: the inner limit always decides
    const bool outside = size > kInnerLimit;
    const bool farAside =
        Math::Abs(Ce) > kOuterLimit;  // where the sum may come back from its bounds
    const bool exists = !(beyond | outside | farAside);
    constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
    b = exists ? Zb + Qn * (Cn + d.real) : kNowhere;
    l = exists ? fEast + Qn * e : kNowhere;
    return exists;
  }

  template <class Math>
  GEOMATH_INLINE void Inverse(double& n, double& e) const {
    const auto [sinCn, cosCn, sinhCe, coshCe] = ToSphere<Math>((n - Zb) / Qn, (e - fEast) / Qn);
    const double side = std::sqrt(sinhCe * sinhCe + cosCn * cosCn);
    const double Z = Math::Atan2(sinCn, side), perCosh = 1 / coshCe;
    n = Z + SumSin2(cgb, sinCn * perCosh, side * perCosh);
    e = lambda0 + Math::Atan2(sinhCe, cosCn);
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const {
    const bool latitude = std::abs(b) < simd::kMaxAngle;
    const bool longitude = std::abs(l - lambda0) < simd::kMaxAngle;
    return nearSphere & latitude & longitude;
  }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    const bool north = std::abs((n - Zb) / Qn) < simd::kMaxAngle;
    const bool within = std::abs((e - fEast) / Qn) <= kInnerLimit;
    return nearSphere & north & within;
  }
};

}  // namespace zel_cs::geomath
