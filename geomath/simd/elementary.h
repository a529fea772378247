#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

#include "geomath/simd/kernel.h"
#include "geomath/simd/minimax.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath::simd {

/// The elementary functions that formulas are written in, in two forms with one interface: `Scalar`
/// for one point at a time, those of scalar.h, and `Polynomial<Target>` for loops over columns,
/// where a formula with special cases takes the one that its domain allows (`kColumns`). `Real` is
/// what they compute with: double here, a number with its derivatives in DualMath.
struct Scalar {
  using Real = double;
  static constexpr bool kColumns = false;
  static void SinCos(double x, double& sine, double& cosine) {
    const SineCosine pair = geomath::SinCos(x);
    sine = pair.sin;
    cosine = pair.cos;
  }
  static double Atan2(double y, double x) { return geomath::Atan2(y, x); }
  static double Atan(double x) { return geomath::Atan(x); }
  static double Log(double x) { return geomath::Log(x); }
  static double Log1p(double x) { return geomath::Log1p(x); }
  static double Exp(double x) { return geomath::Exp(x); }
  static double Sqrt(double x) { return std::sqrt(x); }
  static double Abs(double x) { return std::abs(x); }
  static double CopySign(double x, double sign) { return std::copysign(x, sign); }
};

/// Angles, radians, below which Polynomial::SinCos holds.
inline constexpr double kMaxAngle = 1e5;

/// Branch-free polynomials on plain doubles and 64-bit integers, which a compiler vectorises for
/// whatever instruction set the source is compiled for: no calls, no tables, no intrinsics.
///
///   function      domain             worst error, units in the last place
///   SinCos        |x| < 1e5          1.5 within one turn, 2.1 beyond
///   Atan2, Atan   all finite         1.75
///   Log           positive normal    1.1
///   Log1p         x > −1             1.1
///   Exp           −708 < x < 709     1.0
///
/// Outside these domains results are meaningless numbers; NaN gives NaN in SinCos and Exp.
/// The terms of minimax.h are summed in pairs, and pairs in pairs (Estrin 1960), so that few operations
/// wait for another.
template <class Target>
struct Polynomial {
  using Real = double;
  static constexpr bool kColumns = true;
  static GEOMATH_INLINE void SinCos(double x, double& sine, double& cosine);
  static GEOMATH_INLINE double Atan2(double y, double x);
  static GEOMATH_INLINE double Atan(double x) { return Atan2(x, 1.0); }
  static GEOMATH_INLINE double Log(double x);
  static GEOMATH_INLINE double Log1p(double x);
  static GEOMATH_INLINE double Exp(double x);
  static GEOMATH_INLINE double Sqrt(double x) { return std::sqrt(x); }
  static GEOMATH_INLINE double Abs(double x) { return std::abs(x); }
  static GEOMATH_INLINE double CopySign(double x, double sign) { return std::copysign(x, sign); }

 private:
  using Bits = std::uint64_t;
  static constexpr Bits kSignBit = Bits{1} << 63;

  static GEOMATH_INLINE Bits ToBits(double x) { return std::bit_cast<Bits>(x); }
  static GEOMATH_INLINE double FromBits(Bits bits) { return std::bit_cast<double>(bits); }
  static GEOMATH_INLINE double AtanTail(double t);
};

// Cody and Waite 1980, chapter 8: x = k·π/2 + r with π/2 cut into two 33-bit pieces, exact products
// for |k| < 2²⁰, and a tail; then sine and cosine of r, |r| ≤ π/4, are swapped and signed by k.
template <class Target>
GEOMATH_INLINE void Polynomial<Target>::SinCos(double x, double& sine, double& cosine) {
  using namespace minimax;
  const double shifted = x * kTwoOverPi + kRound;
  const Bits quadrant = ToBits(shifted);
  const double k = shifted - kRound;
  double r = x - k * kPiOver2Pieces[0];
  r = r - k * kPiOver2Pieces[1];
  r = r - k * kPiOver2Pieces[2];
  const double z = r * r;
  const double z2 = z * z;
  const double sinTail = (kSin[1] + z * kSin[2]) + z2 * ((kSin[3] + z * kSin[4]) + z2 * kSin[5]);
  const double cosTail = (kCos[1] + z * kCos[2]) + z2 * ((kCos[3] + z * kCos[4]) + z2 * kCos[5]);
  const double s = r + r * z * (kSin[0] + z * sinTail);
  const double half = 0.5 * z;
  const double w = 1.0 - half;
  const double c = w + (((1.0 - w) - half) + z * z * (kCos[0] + z * cosTail));

  const Bits odd = Bits{0} - (quadrant & 1);
  const Bits difference = (ToBits(s) ^ ToBits(c)) & odd;
  sine = FromBits((ToBits(s) ^ difference) ^ ((quadrant & 2) << 62));
  cosine = FromBits((ToBits(c) ^ difference) ^ (((quadrant + 1) & 2) << 62));
}

// atan t − t for |t| ≤ tan(π/8).
template <class Target>
GEOMATH_INLINE double Polynomial<Target>::AtanTail(double t) {
  const double z = t * t;
  const double z2 = z * z, z4 = z2 * z2;
  const double* const k = minimax::kAtan;
  const double p = ((k[0] + z * k[1]) + z2 * (k[2] + z * k[3])) +
                   z4 * (((k[4] + z * k[5]) + z2 * (k[6] + z * k[7])) +
                         z4 * ((k[8] + z * k[9]) + z2 * (k[10] + z * k[11])));
  return t * z * p;
}

// Smaller over larger of |x| and |y|, reduced by π/4 above tan(π/8); the octant is put back with
// the rounding errors of its multiple of π/4.
template <class Target>
GEOMATH_INLINE double Polynomial<Target>::Atan2(double y, double x) {
  using namespace minimax;
  const double ax = FromBits(ToBits(x) & ~kSignBit);
  const double ay = FromBits(ToBits(y) & ~kSignBit);
  const bool steep = ax < ay;
  const double larger = steep ? ay : ax;
  const double smaller = steep ? ax : ay;
  const bool reduce = smaller > kTanPiOver8 * larger;
  const double numerator = reduce ? smaller - larger : smaller;
  double denominator = reduce ? smaller + larger : larger;
  denominator = denominator == 0.0 ? 1.0 : denominator;
  const double t = numerator / denominator;
  const double tail = AtanTail(t);

  const double reducedBase = reduce ? kPiOver2 * 0.5 : 0.0;
  const double reducedLow = reduce ? kPiOver2Low * 0.5 : 0.0;
  double base = steep ? kPiOver2 - reducedBase : reducedBase;
  double low = steep ? kPiOver2Low - reducedLow : reducedLow;
  double sign = steep ? -1.0 : 1.0;
  const bool left = x < 0.0;
  base = left ? 2.0 * kPiOver2 - base : base;
  low = left ? 2.0 * kPiOver2Low - low : low;
  sign = left ? -sign : sign;
  const double angle = base + (sign * t + (sign * tail + low));
  return FromBits(ToBits(angle) ^ (ToBits(y) & kSignBit));
}

// x = 2ᵏ·m with √½ ≤ m < √2; log m from s = f/(2 + f), f = m − 1, in the arrangement that keeps f
// exact (Tang 1990).
template <class Target>
GEOMATH_INLINE double Polynomial<Target>::Log(double x) {
  const Bits offset = ToBits(x) - 0x3fe6a09e667f3bcdULL + (Bits{1023} << 52);
  const Bits biased = offset >> 52;
  const double k = FromBits(biased | 0x4330000000000000ULL) - (0x1p52 + 1023.0);
  const double m = FromBits(ToBits(x) - ((biased - 1023) << 52));
  const double f = m - 1.0;
  const double s = f / (2.0 + f);
  const double z = s * s;
  const double h = 0.5 * f * f;
  const double t = s * (h + z * minimax::LogTail(z));
  return k * minimax::kLn2 - ((h - (t + k * minimax::kLn2Low)) - f);
}

// log u with u = 1 + x rounded, and the part of x that the rounding lost put back (Kahan).
template <class Target>
GEOMATH_INLINE double Polynomial<Target>::Log1p(double x) {
  const double u = 1.0 + x;
  const double lost = x - (u - 1.0);
  return Log(u) + lost / u;
}

// x = k·ln 2 + r, |r| ≤ ln 2/2; the power of two is added to the exponent.
template <class Target>
GEOMATH_INLINE double Polynomial<Target>::Exp(double x) {
  using namespace minimax;
  const double shifted = x * kLog2E + kRound;
  const double k = shifted - kRound;
  double r = x - k * kLn2;
  r = r - k * kLn2Low;
  const double e = 1.0 + (r + r * r * ExpTail(r));
  return FromBits(ToBits(e) + (ToBits(shifted) << 52));
}

/// The functions of columns for one point: the same bits.
#ifndef GEOMATH_COMPACT
using BatchMath = Polynomial<struct Baseline>;
#else
/// A build whose size counts (GEOMATH_COMPACT) has them once, and calls them.
struct BatchMath {
  using Real = double;
  static constexpr bool kColumns = true;
  static void SinCos(double x, double& sine, double& cosine);
  static double Atan2(double y, double x);
  static double Atan(double x) { return Atan2(x, 1.0); }
  static double Log(double x);
  static double Log1p(double x);
  static double Exp(double x);
  static double Sqrt(double x) { return std::sqrt(x); }
  static double Abs(double x) { return std::abs(x); }
  static double CopySign(double x, double sign) { return std::copysign(x, sign); }
};
#endif

}  // namespace zel_cs::geomath::simd
