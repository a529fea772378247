#pragma once

#include <cmath>
#include <numbers>

#include "geomath/magnetic/magnetic_field.h"
#include "geomath/simd/kernel.h"

// The field of a model as formulas on a number type, `double` for one point and lanes of doubles
// for several. Each point runs the same operations in the same order, alone or among others.
//
// Symbols of Chulliat et al. 2020, section 1.2:
//   φ phi, λ lambda, h height   geodetic        φ′ r   geocentric latitude and radius, km
//   X′ Y′ Z′                    north, east, down in the geocentric frame
//   s = sin φ′, c = cos φ′, ρ = a/r with a = 6371.2 km, ψ = φ′ − φ
//
// The report's Schmidt functions are P(n,m)(s) = S(n,m)·c^m·Q(n,m)(s), Q monic of degree n − m in s
// (Gauss normalisation). The factors S go into the coefficients, and what is left is
//   Q(n+1,m) = s·Q(n,m) − K(n+1,m)·Q(n−1,m)    K(n+1,m) = (n² − m²)/((2n + 1)(2n − 1))
//   dQ(n,m)/ds = (n − m)·Q(n,m+1)
// (Chapman and Bartels 1940, chapter 17). With the powers of c kept apart nothing is divided by
// cos φ′, so that a pole is a point like any other, and with one order after the other no array of
// functions is needed.
//
// What an order contributes along a parallel is p·cos mλ + q·sin mλ. The amplitudes p and q depend
// on latitude and height alone: the points of a row share them.
namespace zel_cs::geomath::magnetic {

inline constexpr double kSemiMajorAxis = 6378.137;      // km, WGS84
inline constexpr double kSemiMinorAxis = 6356.7523142;  // km, WGS84 as the model rounds it
inline constexpr double kGeomagneticRadius = 6371.2;    // km, reference radius of the coefficients
inline constexpr double kPolarGridLatitude = 55;  // degrees, from here grid north is that of UPS
inline constexpr double kZoneWidth = 6;           // degrees, UTM
inline constexpr double kDegree = std::numbers::pi / 180;     // radians
inline constexpr double kPerRadian = 180 / std::numbers::pi;  // degrees
inline constexpr double kE2 =
    1 - kSemiMinorAxis * kSemiMinorAxis / (kSemiMajorAxis * kSemiMajorAxis);  // e²
inline constexpr double kEp2 = kE2 / (1 - kE2);                               // e′²

/// A model's terms, m = 0 … degree and within it n = m … degree, at a date that lies `years` before
/// the date wanted.
struct Series {
  const MagneticTerm* terms;
  int degree;
  double years;
};

/// A latitude and height in the geocentric frame.
template <class Real>
struct Parallel {
  Real s, c, rho;       // sin φ′, cos φ′, a/r
  Real sinPsi, cosPsi;  // turn the field into the geodetic frame
};

struct GeodeticLatitude {
  double sinPhi, cosPhi;
};

/// Equations 7 and 8.
GEOMATH_INLINE Parallel<double> ToGeocentric(const GeodeticLatitude& latitude, double height) {
  const auto [sinPhi, cosPhi] = latitude;
  const double rc = kSemiMajorAxis / std::sqrt(1 - kE2 * (sinPhi * sinPhi));  // equation 8
  const double p = (rc + height) * cosPhi;                                    // equation 7
  const double z = (rc * (1 - kE2) + height) * sinPhi;                        // equation 7
  const double r = std::sqrt(p * p + z * z);
  const double s = z / r, c = p / r;
  return {s, c, kGeomagneticRadius / r, s * cosPhi - c * sinPhi, c * cosPhi + s * sinPhi};
}

/// What multiplies cos mλ and sin mλ in the field, then in its yearly change: g, h, ġ, ḣ or sums
/// of them. This is the form for several points; for one, a simd::Pack<Target, 4> takes its place.
template <class Lanes>
struct Quad {
  Lanes v[4];

  GEOMATH_INLINE Quad(double all) {
    for (Lanes& lanes : v) lanes = all;
  }
  static GEOMATH_INLINE Quad Load(const double* from) {
    Quad quad(0);
    for (int i = 0; i < 4; ++i) quad.v[i] = from[i];
    return quad;
  }
  GEOMATH_INLINE Quad& operator+=(const Quad& other) {
    for (int i = 0; i < 4; ++i) v[i] += other.v[i];
    return *this;
  }
  friend GEOMATH_INLINE Quad operator-(Quad a, const Quad& b) {
    for (int i = 0; i < 4; ++i) a.v[i] -= b.v[i];
    return a;
  }
  friend GEOMATH_INLINE Quad operator*(Quad a, const Lanes& factor) {
    for (Lanes& lanes : a.v) lanes *= factor;
    return a;
  }
};

/// The sums over n of one order m: ρ^(n+2)·Q(n,m) times each number of the terms.
template <class Four>
struct DegreeSums {
  Four value = 0.0, radial = 0.0, slope = 0.0;
};

/// `sectoral` is ρ^(m+2); `count` terms, those of n = m and on.
template <class Four, class Real>
GEOMATH_INLINE DegreeSums<Four> SumDegrees(const MagneticTerm* terms, int count,
                                           const Real& sectoral, const Real& sRho,
                                           const Real& rho2) {
  DegreeSums<Four> sums;
  Real q = sectoral, before = 0.0;  // ρ^(n+2)·Q(n,m) and the one before
  for (int i = 0; i < count; ++i) {
    const MagneticTerm& term = terms[i];
    sums.value += Four::Load(term.value) * q;
    sums.radial += Four::Load(term.radial) * q;
    sums.slope += Four::Load(term.slope) * q;
    const Real next = sRho * q - term.recursion * (rho2 * before);
    before = q;
    q = next;
  }
  return sums;
}

/// Calls `use(m, x, y, z)` for m = 0 … degree with the amplitudes of X′, Y′, Z′: equations 10 to
/// 12. Those of Y′ are of sin mλ and −cos mλ, of the others of cos mλ and sin mλ.
template <class Four, class Real, class Use>
GEOMATH_INLINE void ForEachOrder(const Series& series, const Parallel<Real>& at, Use use) {
  const Real sRho = at.s * at.rho, rho2 = at.rho * at.rho;
  const MagneticTerm* term = series.terms;
  int count = series.degree + 1;
  Real sectoral = rho2;
  Real cBefore = 0.0, cPower = 1.0;  // c^(m−1), for m = 0 never of use, and c^m
  DegreeSums<Four> sums = SumDegrees<Four>(term, count, sectoral, sRho, rho2);
  for (int m = 0; m <= series.degree; ++m) {
    term += count--;
    sectoral *= at.rho;
    const DegreeSums<Four> next = SumDegrees<Four>(term, count, sectoral, sRho, rho2);  // m + 1
    const Real east = double(m) * cBefore, cNext = at.c * cPower;
    use(m, sums.value * (at.s * east) - next.slope * cNext, sums.value * east,
        sums.radial * cPower);
    cBefore = cPower;
    cPower = cNext;
    sums = next;
  }
}

/// X, Y, Z and their yearly change.
template <class Real>
struct FieldVector {
  Real x = 0.0, y = 0.0, z = 0.0, xDot = 0.0, yDot = 0.0, zDot = 0.0;
};

/// The sum over the orders at a longitude.
template <class Real>
struct LongitudeSum {
  Real cosLambda, sinLambda;
  Real cosM = 1.0, sinM = 0.0;  // cos mλ, sin mλ
  FieldVector<Real> b = {};

  /// The next order, its amplitudes four numbers each.
  template <class Four>
  GEOMATH_INLINE void Add(const Four& x, const Four& y, const Four& z) {
    b.x += x[0] * cosM + x[1] * sinM;
    b.y += y[0] * sinM - y[1] * cosM;
    b.z += z[0] * cosM + z[1] * sinM;
    b.xDot += x[2] * cosM + x[3] * sinM;
    b.yDot += y[2] * sinM - y[3] * cosM;
    b.zDot += z[2] * cosM + z[3] * sinM;
    const Real cosNext = cosM * cosLambda - sinM * sinLambda;
    sinM = sinM * cosLambda + cosM * sinLambda;
    cosM = cosNext;
  }
};

/// From the geocentric into the geodetic frame, equation 17, and on to the date wanted.
template <class Real>
GEOMATH_INLINE FieldVector<Real> ToGeodetic(const FieldVector<Real>& b, const Real& sinPsi,
                                            const Real& cosPsi, double years) {
  const Real xDot = b.xDot * cosPsi - b.zDot * sinPsi;
  const Real zDot = b.xDot * sinPsi + b.zDot * cosPsi;
  return {b.x * cosPsi - b.z * sinPsi + years * xDot,
          b.y + years * b.yDot,
          b.x * sinPsi + b.z * cosPsi + years * zDot,
          xDot,
          b.yDot,
          zDot};
}

/// The convergence of the UTM zone of the longitude, degrees; within a zone and below latitude 55°
/// exact to 1e-9 degrees (Stem 1989, NOAA Manual NOS NGS 5, p. 33).
GEOMATH_INLINE double UtmConvergence(const GeodeticLatitude& latitude, double longitude) {
  constexpr double kRound = 0x1.8p52;  // adding it rounds to an integer
  const auto [sinPhi, cosPhi] = latitude;
  const double border = kZoneWidth * ((longitude / kZoneWidth + kRound) - kRound);
  const double offset = longitude - border;  // from the nearest border of zones
  const double east = offset < 0 ? offset + kZoneWidth / 2 : offset - kZoneWidth / 2;
  const double L = east * kDegree * cosPhi, L2 = L * L;
  const double t = sinPhi / cosPhi, t2 = t * t;
  const double eta2 = kEp2 * (cosPhi * cosPhi), eta4 = eta2 * eta2;
  return t * L * (1 + L2 * ((1 + 3 * eta2 + 2 * eta4) / 3 + L2 * ((2 - t2) / 15))) * kPerRadian;
}

/// From geodetic to grid north, degrees, at a latitude in degrees.
GEOMATH_INLINE double GridConvergence(double degrees, const GeodeticLatitude& latitude,
                                      double longitude) {
  const double utm = UtmConvergence(latitude, longitude);
  const double ups = degrees < 0 ? -longitude : longitude;
  return std::abs(degrees) >= kPolarGridLatitude ? ups : utm;
}

/// Into −180 … 180 degrees from at most one turn beyond.
GEOMATH_INLINE double WrappedDegrees(double angle) {
  const double turn = angle > 180 ? 360.0 : angle < -180 ? -360.0 : 0.0;
  return angle - turn;
}

/// What equation 19 takes roots and angles for.
struct Magnitudes {
  double h, f, declination, inclination;
};

/// Equation 19, and the change of the elements by the chain rule.
GEOMATH_INLINE MagneticPoint Elements(const FieldVector<double>& b, const Magnitudes& of,
                                      double convergence) {
  const double perH = 1 / of.h, perF = 1 / of.f;
  const double hDot = (b.x * b.xDot + b.y * b.yDot) * perH;
  const double fDot = (b.x * b.xDot + b.y * b.yDot + b.z * b.zDot) * perF;
  const double declinationDot = (b.x * b.yDot - b.y * b.xDot) * (perH * perH) * kPerRadian;
  const double inclinationDot = (of.h * b.zDot - b.z * hDot) * (perF * perF) * kPerRadian;
  return {.field = {b.x, b.y, b.z, of.h, of.f, of.declination, of.inclination,
                    WrappedDegrees(of.declination - convergence)},
          .yearlyChange = {b.xDot, b.yDot, b.zDot, hDot, fDot, declinationDot, inclinationDot,
                           declinationDot}};
}

}  // namespace zel_cs::geomath::magnetic
