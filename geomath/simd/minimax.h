#pragma once

#include "geomath/simd/kernel.h"

/// Coefficients of the elementary functions on their reduced arguments, minimax fits (Remez exchange,
/// relative error of the whole function), and the constants that reduce the arguments. Polynomial and
/// the functions of one number arrange the same terms each in its own way.
namespace zel_cs::geomath::minimax {

inline constexpr double kRound = 0x1.8p52;  ///< adding it rounds to an integer

// π/2, what it misses, and the three pieces of which the first two have 33 bits (Cody and Waite 1980).
inline constexpr double kPiOver2 = 0x1.921fb54442d18p+0;
inline constexpr double kPiOver2Low = 0x1.1a62633145c07p-54;
inline constexpr double kTwoOverPi = 0x1.45f306dc9c883p-1;
inline constexpr double kPiOver2Pieces[] = {0x1.921fb54400000p+0, 0x1.0b4611a600000p-34,
                                            0x1.3198a2e037073p-69};
inline constexpr double kTanPiOver8 = 0x1.a827999fcef32p-2;

// ln 2 in 32 bits, and the rest.
inline constexpr double kLn2 = 0x1.62e42fee00000p-1;
inline constexpr double kLn2Low = 0x1.a39ef35793c76p-33;
inline constexpr double kLog2E = 0x1.71547652b82fep+0;

/// sin r = r + r·z·(k[0] + z·(k[1] + …)), cos r = 1 − z/2 + z²·(k[0] + z·(k[1] + …)), z = r²,
/// |r| ≤ π/4.
inline constexpr double kSin[] = {-0x1.5555555555548p-3,  0x1.111111110f7d0p-7,
                                  -0x1.a01a019bfdef0p-13, 0x1.71de3567d3802p-19,
                                  -0x1.ae5e5a91bd62ap-26, 0x1.5d8fd1be22297p-33};
inline constexpr double kCos[] = {0x1.555555555554bp-5,  -0x1.6c16c16c14f91p-10,
                                  0x1.a01a019c844e6p-16, -0x1.27e4f7eac408dp-22,
                                  0x1.1ee9d7b4669eap-29, -0x1.8fa499c5d3494p-37};
/// atan t = t + t·z·(k[0] + z·(k[1] + …)), z = t², |t| ≤ tan(π/8).
inline constexpr double kAtan[] = {
    -0x1.5555555555554p-2, 0x1.999999999964bp-3, -0x1.249249247568ap-3, 0x1.c71c71b74742fp-4,
    -0x1.745d14b942430p-4, 0x1.3b136e23649dfp-4, -0x1.110c724005b59p-4, 0x1.e171f64d58b8dp-5,
    -0x1.ab7d4a6db0051p-5, 0x1.70ec92f6eaf05p-5, -0x1.1236770d21506p-5, 0x1.f1e505de14b57p-7};

/// What log((1 + s)/(1 − s)) − 2·s is of s·z, z = s², where √½ ≤ (1 + s)/(1 − s) < √2.
GEOMATH_INLINE double LogTail(double z) {
  const double z2 = z * z, z4 = z2 * z2;
  return ((0x1.5555555555555p-1 + z * 0x1.9999999999dfbp-2) +
          z2 * (0x1.249249242b90ep-2 + z * 0x1.c71c7258a5ac0p-3)) +
         z4 * ((0x1.745cde4f9e9cfp-3 + z * 0x1.3b20a75750819p-3) +
               z2 * (0x1.0f5d23dbde6cep-3 + z * 0x1.0f5ffa113de8ep-3));
}

/// (eʳ − 1 − r)/r², |r| ≤ ln 2/2.
GEOMATH_INLINE double ExpTail(double r) {
  const double r2 = r * r, r4 = r2 * r2;
  return ((0x1.0000000000000p-1 + r * 0x1.555555555555bp-3) +
          r2 * (0x1.5555555555503p-5 + r * 0x1.111111110ec65p-7)) +
         r4 * (((0x1.6c16c16c3043bp-10 + r * 0x1.a01a01b37b4b3p-13) +
                r2 * (0x1.a01a01369f526p-16 + r * 0x1.71ddf02845827p-19)) +
               r4 * ((0x1.27e5b433dba19p-22 + r * 0x1.af6bda9eb527cp-26) +
                     r2 * 0x1.1e3d35a7819a3p-29));
}

}  // namespace zel_cs::geomath::minimax
