#pragma once

#include <cmath>
#include <cstddef>
#include <iterator>

#include "geomath/base/angle.h"
#include "geomath/base/internal/fold_angle.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// The polynomials of the New Zealand Map Grid. Symbols of the source, there and here:
///   Δφ dPhi  latitude difference, 1e5 arc-seconds    ζ zeta  isometric latitude difference ψ + i·Δλ
///   z        (northing + i·easting)/a
namespace nzmg {

// A plain pair: the product of std::complex looks for infinities each time, which costs as much.
template <class Real>
struct ComplexOf {
  Real re = 0, im = 0;
};
using Complex = ComplexOf<double>;
template <class Real>
GEOMATH_INLINE ComplexOf<Real> operator+(ComplexOf<Real> a, Complex b) {
  return {a.re + b.re, a.im + b.im};
}
template <class Real>
GEOMATH_INLINE ComplexOf<Real> operator*(ComplexOf<Real> a, ComplexOf<Real> b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
GEOMATH_INLINE Complex operator*(double a, Complex b) { return {a * b.re, a * b.im}; }
GEOMATH_INLINE double Norm(Complex a) { return a.re * a.re + a.im * a.im; }
GEOMATH_INLINE Complex operator/(Complex a, Complex b) {
  return 1 / Norm(b) * (a * Complex{b.re, -b.im});
}

inline constexpr double kLatitudeUnit = 1e5 * kRadPerArcSecond;
inline constexpr int kRefinements = 3;  // the number that defines the published inverse

// Land Information New Zealand 2008; the coefficient of the first power first.
// clang-format off
inline constexpr double kA[] = {  // latitude to isometric latitude
  0.6399175073, -0.1358797613, 0.063294409, -0.02526853, 0.0117879,
  -0.0055161, 0.0026906, -0.001333, 0.00067, -0.00034};
inline constexpr Complex kB[] = {  // isometric coordinates to the grid
  {0.7557853228, 0.0}, {0.249204646, 0.003371507}, {-0.001541739, 0.041058560},
  {-0.10162907, 0.01727609}, {-0.26623489, -0.36249218}, {-0.6870983, -1.1651967}};
inline constexpr Complex kC[] = {  // the grid to isometric coordinates, first approximation
  {1.3231270439, 0.0}, {-0.577245789, -0.007809598}, {0.508307513, -0.112208952},
  {-0.15094762, 0.18200602}, {1.01418179, 1.64497696}, {1.9660549, 2.5127645}};
inline constexpr double kD[] = {  // isometric latitude to latitude
  1.5627014243, 0.5185406398, -0.03333098, -0.1052906, -0.0368594,
  0.007317, 0.01220, 0.00394, -0.0013};
// clang-format on

// Σ c[n]·x^(n + 1).
template <class C, std::size_t N, class T>
GEOMATH_INLINE T Powers(const C (&c)[N], T x) {
  T sum{};
  for (std::size_t n = N; n-- > 0;) sum = (sum + c[n]) * x;
  return sum;
}

// dz/dζ = Σ n·B_n·ζ^(n − 1).
GEOMATH_INLINE Complex Slope(Complex zeta) {
  Complex sum;
  for (std::size_t n = std::size(kB); n > 0; --n)
    sum = sum * zeta + static_cast<double>(n) * kB[n - 1];
  return sum;
}

// Newton's step for z(ζ) = z, written as the source has it: (z + Σ (n − 1)·B_n·ζⁿ)/(dz/dζ).
GEOMATH_INLINE Complex Refine(Complex zeta, Complex z) {
  Complex sum;
  for (std::size_t n = std::size(kB); n > 1; --n)
    sum = (sum + static_cast<double>(n - 1) * kB[n - 1]) * zeta;
  return (z + sum * zeta) / Slope(zeta);
}

}  // namespace nzmg

/// TNZMGProj with its origin.
struct NzmgFormulas {
  double a;  // metres
  double phi0, lambda0, fEast, fNorth;

  /// Forward and Inverse return ζ, from which the point scale follows.
  template <class Math>
  GEOMATH_INLINE nzmg::ComplexOf<typename Math::Real> Forward(typename Math::Real& b,
                                                              typename Math::Real& l) const {
    using Real = typename Math::Real;
    const Real dPhi = (b - phi0) / nzmg::kLatitudeUnit;
    const nzmg::ComplexOf<Real> zeta{nzmg::Powers(nzmg::kA, dPhi), FoldTurn(l - lambda0)};
    const nzmg::ComplexOf<Real> z = nzmg::Powers(nzmg::kB, zeta);
    b = fNorth + a * z.re;
    l = fEast + a * z.im;
    return zeta;
  }

  template <class Math>
  GEOMATH_INLINE nzmg::Complex Inverse(double& n, double& e) const {
    const nzmg::Complex z{(n - fNorth) / a, (e - fEast) / a};
    nzmg::Complex zeta = nzmg::Powers(nzmg::kC, z);
    for (int i = 0; i < nzmg::kRefinements; ++i) zeta = nzmg::Refine(zeta, z);
    n = phi0 + nzmg::kLatitudeUnit * nzmg::Powers(nzmg::kD, zeta.re);
    e = lambda0 + zeta.im;
    return zeta;
  }

  /// By dz/dζ, the map being conformal in ζ.
  template <class Math>
  GEOMATH_INLINE void Differentiate(double& b, double& l, double& northL, double& eastL) const {
    const double dPhi = (b - phi0) / nzmg::kLatitudeUnit;
    const nzmg::Complex zeta{nzmg::Powers(nzmg::kA, dPhi), FoldTurn(l - lambda0)};
    const nzmg::Complex slope = a * nzmg::Slope(zeta);
    double perRadian = 0;  // of ψ
    for (std::size_t n = std::size(nzmg::kA); n > 0; --n)
      perRadian = perRadian * dPhi + static_cast<double>(n) * nzmg::kA[n - 1];
    perRadian /= nzmg::kLatitudeUnit;
    b = slope.re * perRadian;
    l = slope.im * perRadian;
    northL = -slope.im;
    eastL = slope.re;
  }

  // Polynomials take any number.
  GEOMATH_INLINE bool ServesForward(double, double) const { return true; }
  GEOMATH_INLINE bool ServesInverse(double, double) const { return true; }
};

}  // namespace zel_cs::geomath
