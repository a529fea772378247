#pragma once

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/geodesic/geodesic_series.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// Geodesics on one ellipsoid, Karney 2013, Algorithms for geodesics, J. Geodesy 87, 43-55, whose
/// equation numbers these are. Symbols there and here, radians and metres:
///   φ phi, β beta   geodetic and reduced latitude    λ lambda, ω omega   longitude, on the sphere
///   α alpha         azimuth, α0 where it crosses     σ sigma             arc from there on
///                   the equator northward            k², ε eps           eqs. 9 and 16
struct GeodesicFormulas {
  double a, b, f;
  double ep2;       // second eccentricity squared
  bool nearSphere;  // the columns of the inverse problem settle
  GeodesicLongitudeSeries longitude;

  /// A direction in the plane, or an angle by its sine and cosine.
  struct Unit {
    double sin, cos;
  };

  /// Eqs. 9 and 16.
  GEOMATH_INLINE double Expansion(double cosAlpha0) const {
    const double k2 = ep2 * (cosAlpha0 * cosAlpha0);
    return k2 / (2 * (1 + std::sqrt(1 + k2)) + k2);
  }

  /// Eq. 6.
  GEOMATH_INLINE Unit Reduced(const Unit& phi) const {
    const double s = (1 - f) * phi.sin, h = std::sqrt(s * s + phi.cos * phi.cos);
    return {s / h, phi.cos / h};
  }

  template <class Math>
  static GEOMATH_INLINE Unit SinCos(double x) {
    Unit u;
    Math::SinCos(x, u.sin, u.cos);
    return u;
  }

  /// An azimuth in [0, 2π).
  template <class Math>
  static GEOMATH_INLINE double Azimuth(double east, double north) {
    const double alpha = Math::Atan2(east, north);
    const double turned = alpha < 0 ? alpha + kTwoPi : alpha + 0.0;
    return turned >= kTwoPi ? 0.0 : turned;
  }

  /// y and x to the sine and cosine of their angle; zero and zero stay.
  static GEOMATH_INLINE Unit Normalised(double y, double x) {
    const double h = std::sqrt(y * y + x * x), inverse = 1 / (h == 0 ? 1.0 : h);
    return {y * inverse, x * inverse};
  }

  static GEOMATH_INLINE Unit Sum(const Unit& u, const Unit& v) {
    return {u.sin * v.cos + u.cos * v.sin, u.cos * v.cos - u.sin * v.sin};
  }
  static GEOMATH_INLINE Unit Difference(const Unit& u, const Unit& v) {
    return {u.sin * v.cos - u.cos * v.sin, u.cos * v.cos + u.sin * v.sin};
  }
};

/// A geodesic that starts at a point: everything of the direct problem that does not depend on the
/// distance.
struct GeodesicStart {
  /// Beyond it, in units of b, digits of a longitude are lost.
  static constexpr double kMaxArc = 200;

  GeodesicFormulas::Unit alpha0, sigma1, omega1;
  double lambda1;
  double metresPerArc;  // b·A1
  double fA3;           // f·sin α0·A3
  double b11, b31;      // the sums of C1 and C3 at the start
  double a1, k2;
  GeodesicTerms<6> c1, c1Reverted;
  GeodesicTerms<5> c3;
  double oneLessF;

  template <class Math>
  static GEOMATH_INLINE GeodesicStart At(const GeodesicFormulas& g, double phi1, double lambda1,
                                         double alpha1) {
    using Unit = GeodesicFormulas::Unit;
    const Unit alpha = GeodesicFormulas::SinCos<Math>(alpha1);
    const Unit beta = g.Reduced(GeodesicFormulas::SinCos<Math>(phi1));
    const double across = alpha.sin * beta.sin;
    GeodesicStart line;
    line.alpha0 = {alpha.sin * beta.cos, std::sqrt(alpha.cos * alpha.cos + across * across)};  // 10
    line.sigma1 = GeodesicFormulas::Normalised(beta.sin, alpha.cos * beta.cos);                // 11
    line.omega1 = {line.alpha0.sin * line.sigma1.sin, line.sigma1.cos};                        // 12
    line.lambda1 = lambda1;
    const double eps = g.Expansion(line.alpha0.cos);
    line.a1 = GeodesicA1(eps);
    line.k2 = g.ep2 * (line.alpha0.cos * line.alpha0.cos);
    line.metresPerArc = g.b * line.a1;
    line.fA3 = g.f * line.alpha0.sin * g.longitude.A3(eps);
    line.c1 = GeodesicC1(eps);
    line.c1Reverted = GeodesicC1Reverted(eps);
    line.c3 = g.longitude.C3(eps);
    line.b11 = line.c1.Sine(line.sigma1.sin, line.sigma1.cos);
    line.b31 = line.c3.Sine(line.sigma1.sin, line.sigma1.cos);
    line.oneLessF = 1 - g.f;
    return line;
  }

  /// The end at `distance`, and the azimuth there back to the start.
  template <class Math>
  GEOMATH_INLINE void End(double distance, double& phi2, double& lambda2,
                          double& backAzimuth) const {
    using Unit = GeodesicFormulas::Unit;
    const double tau12 = distance / metresPerArc;  // 19
    const Unit tau2 = GeodesicFormulas::Sum(sigma1, GeodesicFormulas::SinCos<Math>(b11 + tau12));
    const double first = tau12 + (b11 + c1Reverted.Sine(tau2.sin, tau2.cos));  // 15, 20
    const Unit near = GeodesicFormulas::Sum(sigma1, GeodesicFormulas::SinCos<Math>(first));
    // Newton's step on eqs. 7 and 15, whose series end later than their reversion.
    const double excess = first + (c1.Sine(near.sin, near.cos) - b11) - tau12;
    const double slope = std::sqrt(1 + k2 * near.sin * near.sin);
    const double sigma12 = first - excess * a1 / slope;
    const Unit sigma2 = GeodesicFormulas::Sum(sigma1, GeodesicFormulas::SinCos<Math>(sigma12));

    const double north = alpha0.cos * sigma2.cos;
    const double sinBeta = alpha0.cos * sigma2.sin;  // 13
    const double cosBeta = std::sqrt(alpha0.sin * alpha0.sin + north * north);
    const Unit omega12 =
        GeodesicFormulas::Difference({alpha0.sin * sigma2.sin, sigma2.cos}, omega1);  // 12
    const double lambda12 = Math::Atan2(omega12.sin, omega12.cos) -
                            fA3 * (sigma12 + (c3.Sine(sigma2.sin, sigma2.cos) - b31));  // 8, 23
    phi2 = Math::Atan2(sinBeta, oneLessF * cosBeta);
    lambda2 = FoldTurn(lambda1 + FoldTurn(lambda12));
    backAzimuth = GeodesicFormulas::Azimuth<Math>(-alpha0.sin, -north);  // 14
  }
};

/// The direct problem over columns: latitude, longitude, azimuth and distance become latitude,
/// longitude and back azimuth of the end; the distance stays.
struct GeodesicDirectFormulas {
  static constexpr std::size_t kColumns = 4;
  GeodesicFormulas g;

  template <class Math>
  GEOMATH_INLINE void Convert(double& phi, double& lambda, double& azimuth,
                              double& distance) const {
    const GeodesicStart start = GeodesicStart::At<Math>(g, phi, lambda, azimuth);
    start.End<Math>(distance, phi, lambda, azimuth);
  }
  GEOMATH_INLINE bool Serves(double phi, double lambda, double azimuth, double distance) const {
    const bool latitude = std::abs(phi) <= kHalfPi, longitude = std::abs(lambda) <= kTwoPi;
    const bool direction = std::abs(azimuth) < simd::kMaxAngle;
    const bool length = std::abs(distance) < GeodesicStart::kMaxArc * g.b;
    return latitude & longitude & direction & length;
  }
};

/// The inverse problem once the spherical longitude difference ω12 is known: the sphere is solved for
/// azimuths and arc.
struct GeodesicTriangleFormulas {
  GeodesicFormulas g;

  /// A pair of points on the auxiliary sphere with a longitude difference of ω between them.
  struct Triangle {
    GeodesicFormulas::Unit beta1, beta2;
    double sinDelta;        // of β2 − β1, with all its digits
    double cosCos, sinSin;  // cos β1·cos β2, sin β1·sin β2
  };
  struct Solved {
    double sinSigma12, cosSigma12, sigma12;
    GeodesicFormulas::Unit alpha1, alpha2;
    double sinAlpha0;
  };

  template <class Math>
  GEOMATH_INLINE Triangle Prepare(double phi1, double phi2) const {
    using Unit = GeodesicFormulas::Unit;
    const Unit p1 = GeodesicFormulas::SinCos<Math>(phi1);
    const Unit p2 = GeodesicFormulas::SinCos<Math>(phi2);
    const double s1 = (1 - g.f) * p1.sin, s2 = (1 - g.f) * p2.sin;
    const double inv1 = 1 / std::sqrt(s1 * s1 + p1.cos * p1.cos);
    const double inv2 = 1 / std::sqrt(s2 * s2 + p2.cos * p2.cos);
    const Unit beta1{s1 * inv1, p1.cos * inv1}, beta2{s2 * inv2, p2.cos * inv2};  // 6
    const double sinDelta =
        (1 - g.f) * GeodesicFormulas::SinCos<Math>(phi2 - phi1).sin * (inv1 * inv2);
    return {beta1, beta2, sinDelta, beta1.cos * beta2.cos, beta1.sin * beta2.sin};
  }

  /// Eqs. 49 to 51, with β2 − β1 and 1 − cos ω in forms that keep their digits on short lines.
  template <class Math>
  GEOMATH_INLINE Solved Solve(const Triangle& t, const GeodesicFormulas::Unit& omega) const {
    const double versine = omega.cos > 0 ? omega.sin * omega.sin / (1 + omega.cos) : 1 - omega.cos;
    const double east = t.beta2.cos * omega.sin;
    const double north = t.sinDelta + t.beta1.sin * t.beta2.cos * versine;
    const double north2 = t.sinDelta - t.beta2.sin * t.beta1.cos * versine;
    const double sinSigma = std::sqrt(east * east + north * north);
    const double cosSigma = t.sinSin + t.cosCos * omega.cos;
    const double inverse = 1 / (sinSigma == 0 ? 1.0 : sinSigma);
    return {sinSigma,
            cosSigma,
            Math::Atan2(sinSigma, cosSigma),
            {east * inverse, north * inverse},
            {t.beta1.cos * omega.sin * inverse, north2 * inverse},
            t.cosCos * omega.sin * inverse};
  }

  /// cos α0 (10) and σ at both ends (11), not yet divided by it.
  struct Ends {
    double cosAlpha0;
    GeodesicFormulas::Unit sigma1, sigma2;

    /// What a series gains from end to end.
    template <std::size_t N>
    GEOMATH_INLINE double Change(const GeodesicTerms<N>& c) const {
      return c.Sine(sigma2.sin, sigma2.cos) - c.Sine(sigma1.sin, sigma1.cos);
    }
  };
  GEOMATH_INLINE Ends EndsOf(const Triangle& t, const Solved& s) const {
    const double across = s.alpha1.sin * t.beta1.sin;
    const double cosAlpha0 = std::sqrt(s.alpha1.cos * s.alpha1.cos + across * across);
    const double inverse = 1 / (cosAlpha0 == 0 ? 1.0 : cosAlpha0);
    return {cosAlpha0,
            {t.beta1.sin * inverse, s.alpha1.cos * t.beta1.cos * inverse},
            {t.beta2.sin * inverse, s.alpha2.cos * t.beta2.cos * inverse}};
  }

  /// φ1, λ1, φ2, λ2 become the distance, the azimuth, the back azimuth and ω12.
  template <class Math>
  GEOMATH_INLINE void Finish(const Triangle& t, double omega12, double& phi1, double& lambda1,
                             double& phi2, double& lambda2) const {
    const Solved s = Solve<Math>(t, GeodesicFormulas::SinCos<Math>(omega12));
    const Ends ends = EndsOf(t, s);
    const double eps = g.Expansion(ends.cosAlpha0);
    phi1 = g.b * GeodesicA1(eps) * (s.sigma12 + ends.Change(GeodesicC1(eps)));  // 7, 15
    lambda1 = GeodesicFormulas::Azimuth<Math>(s.alpha1.sin, s.alpha1.cos);
    phi2 = GeodesicFormulas::Azimuth<Math>(-s.alpha2.sin, -s.alpha2.cos);
    lambda2 = omega12;
  }
};

/// The inverse problem over columns for two points that are close together: λ12 is the integral of
/// √(1 − e²·cos²β) over ω (Bessel's dλ/dω), whose mean between the ends three nodes give (Gauss).
struct GeodesicCloseFormulas {
  static constexpr std::size_t kColumns = 4;
  /// Differences in latitude and in longitude, radians, within which the mean leaves less than 1 nm, and
  /// the latitude beyond which it changes too fast.
  static constexpr double kClose = 0.012, kNearPole = 1.4;

  GeodesicTriangleFormulas triangle;

  template <class Math>
  GEOMATH_INLINE void Convert(double& phi1, double& lambda1, double& phi2, double& lambda2) const {
    const auto t = triangle.Prepare<Math>(phi1, phi2);
    const double lambda12 = FoldTurn(lambda2 - lambda1);
    triangle.Finish<Math>(t, lambda12 / MeanSlope(t, lambda12), phi1, lambda1, phi2, lambda2);
  }

  GEOMATH_INLINE bool Serves(double phi1, double lambda1, double phi2, double lambda2) const {
    const bool latitude1 = std::abs(phi1) < kNearPole, latitude2 = std::abs(phi2) < kNearPole;
    const bool longitude1 = std::abs(lambda1) <= kTwoPi, longitude2 = std::abs(lambda2) <= kTwoPi;
    const bool north = std::abs(phi2 - phi1) < kClose;
    const bool east = std::abs(FoldTurn(lambda2 - lambda1)) < kClose;
    return triangle.g.nearSphere & latitude1 & latitude2 & longitude1 & longitude2 & north & east;
  }

 private:
  GEOMATH_INLINE double MeanSlope(const GeodesicTriangleFormulas::Triangle& t,
                                  double lambda12) const {
    constexpr double kNode = 0.11270166537925831, kEnds = 5.0 / 18, kMiddle = 8.0 / 18;
    const double e2 = triangle.g.f * (2 - triangle.g.f);
    const double tan1 = t.beta1.sin / t.beta1.cos, tan2 = t.beta2.sin / t.beta2.cos;
    const double mean = (tan1 + tan2) / 2;
    const double omega2 = lambda12 * lambda12 / SlopeSquared(e2, mean);
    // tan β grows with ω as a sum of its values at the ends times sin(share·ω12)/sin ω12.
    const auto share = [omega2](double x) {
      return x * (1 + omega2 * ((1 - x * x) / 6 + omega2 * (1 - x * x) * (7 - 3 * x * x) / 360));
    };
    const double far = share(1 - kNode), near = share(kNode), half = share(0.5);
    const double first = far * tan1 + near * tan2, last = near * tan1 + far * tan2;
    return kEnds * (std::sqrt(SlopeSquared(e2, first)) + std::sqrt(SlopeSquared(e2, last))) +
           kMiddle * std::sqrt(SlopeSquared(e2, half * (tan1 + tan2)));
  }
  static GEOMATH_INLINE double SlopeSquared(double e2, double tanBeta) {
    return 1 - e2 / (1 + tanBeta * tanBeta);
  }
};

/// The inverse problem over columns, for two points that are neither close together nor nearly
/// antipodal: ω12 is found by a Newton iteration on λ(ω) with the derivative of the sphere (each of the
/// three steps takes all but f or the square of the error). The columns are those of Finish.
struct GeodesicInverseFormulas {
  static constexpr std::size_t kColumns = 4;
  static constexpr double kFromAntipode = 0.2;  // radians, within which the columns do not serve

  GeodesicTriangleFormulas triangle;

  template <class Math>
  GEOMATH_INLINE void Convert(double& phi1, double& lambda1, double& phi2, double& lambda2) const {
    const GeodesicFormulas& g = triangle.g;
    const auto t = triangle.Prepare<Math>(phi1, phi2);
    const double lambda12 = FoldTurn(lambda2 - lambda1);

    const GeodesicFormulas::Unit first = GeodesicFormulas::SinCos<Math>(lambda12);
    const auto sphere = triangle.Solve<Math>(t, first);
    double omega12 = lambda12 + g.f * sphere.sinAlpha0 * sphere.sigma12 /
                                    (1 - g.f * Slope(t, sphere, first.cos));
    omega12 = Improve<Math>(t, lambda12, omega12);  // written out: the compilers vectorise no loop
    omega12 = Improve<Math>(t, lambda12, omega12);  // of this size within that over the columns
    omega12 = Improve<Math>(t, lambda12, omega12);
    triangle.Finish<Math>(t, omega12, phi1, lambda1, phi2, lambda2);
  }

  GEOMATH_INLINE bool Serves(double phi1, double lambda1, double phi2, double lambda2) const {
    const bool latitude1 = std::abs(phi1) <= kHalfPi, latitude2 = std::abs(phi2) <= kHalfPi;
    const bool longitude1 = std::abs(lambda1) <= kTwoPi, longitude2 = std::abs(lambda2) <= kTwoPi;
    const bool mirrored = std::abs(phi1 + phi2) < kFromAntipode;
    const bool opposite = std::abs(FoldTurn(lambda2 - lambda1)) > kPi - kFromAntipode;
    const bool polar = std::abs(phi1) > kHalfPi - kFromAntipode;
    const bool inRange = latitude1 & latitude2 & longitude1 & longitude2 & triangle.g.nearSphere;
    const bool close = GeodesicCloseFormulas{triangle}.Serves(phi1, lambda1, phi2, lambda2);
    return inRange & !close & !(mirrored & (opposite | polar));
  }

 private:
  /// d(sin α0·σ12)/dω on the sphere, by which ω − λ = f·sin α0·I3 changes.
  static GEOMATH_INLINE double Slope(const GeodesicTriangleFormulas::Triangle& t,
                                     const GeodesicTriangleFormulas::Solved& s, double cosOmega) {
    const double a2 = s.sinAlpha0 * s.sinAlpha0;
    const double inverse = 1 / (s.sinSigma12 == 0 ? 1.0 : s.sinSigma12);
    return s.sigma12 * inverse * (t.cosCos * cosOmega - a2 * s.cosSigma12) + a2;
  }

  /// One step of the iteration: the ω12 that follows another.
  template <class Math>
  GEOMATH_INLINE double Improve(const GeodesicTriangleFormulas::Triangle& t, double lambda12,
                                double omega12) const {
    const GeodesicFormulas& g = triangle.g;
    const GeodesicFormulas::Unit omega = GeodesicFormulas::SinCos<Math>(omega12);
    const auto s = triangle.Solve<Math>(t, omega);
    const auto ends = triangle.EndsOf(t, s);
    const double eps = g.Expansion(ends.cosAlpha0), fA3 = g.f * g.longitude.A3(eps);
    const double i3 = s.sigma12 + ends.Change(g.longitude.C3(eps));       // 23
    const double excess = (omega12 - fA3 * s.sinAlpha0 * i3) - lambda12;  // 8
    return omega12 - excess / (1 - fA3 * Slope(t, s, omega.cos));
  }
};

}  // namespace zel_cs::geomath
