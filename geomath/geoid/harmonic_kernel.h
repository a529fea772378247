#pragma once

#include <cstddef>

#include "geomath/simd/kernel.h"

namespace zel_cs::geomath {

/// A model's coefficients and the factors of the Legendre recursion, which depend on no place.
struct HarmonicSeries {
  std::size_t count;          // degrees held
  const double *C, *S;        // potential, triangular order
  const double *cC, *cS;      // correction in centimetres; both null when there is none
  const double* root;         // √k, k = 0 … 2·count + 1
  const double* inverseRoot;  // 1/√k
  const double* degreeRoot;   // √((2n + 1)(2n − 1)) of each degree n
  const double* degreeRatio;  // √((2n + 1)/(2n − 3)), 0 below degree 2

  /// Length of a row of one number for each order: filled up to an even number of at least 2.
  GEOMATH_INLINE std::size_t Orders() const { return (count + 1) / 2 * 2; }
};

/// What the synthesis takes from a latitude.
struct Station {
  double cosTheta, sinTheta;  // of the geocentric colatitude
  double ar;                  // semi-major axis over geocentric radius
  double metres;              // GM/(normal gravity · geocentric radius)
};

/// Latitudes and longitudes that are summed together.
inline constexpr std::size_t kLatitudes = 32;
inline constexpr std::size_t kLongitudes = 64;

/// Orders whose coefficients are read together.
inline constexpr std::size_t kOrdersTogether = 8;

/// Rows of working space that the sums over the degrees need besides their results.
inline constexpr std::size_t kWorkRows = kLatitudes + 2 + 4 * kOrdersTogether;

/// The sums over the degrees, Σ cosine[m]·cos mλ + sine[m]·sin mλ being the undulation less its
/// zero-degree term. Those of order m stand at m·stride, one for each latitude.
struct OrderSums {
  double *cosine, *sine;
  std::size_t stride;

  /// Those of the latitudes from `latitude` on.
  GEOMATH_INLINE OrderSums From(std::size_t latitude) const {
    return {cosine + latitude, sine + latitude, stride};
  }
};

/// Cosines and sines of up to kLongitudes longitudes; those beyond the last are zero.
struct Longitudes {
  double cosine[kLongitudes], sine[kLongitudes];
  std::size_t count;
};

/// The harmonic synthesis of GlobalGeoid. A height does not depend on what else is summed with it,
/// nor on the instruction set: every point runs the same operations in the same order.
template <class Target>
struct HarmonicKernel {
  /// The sums of one latitude, of stride 1. `work` has kWorkRows rows of one number for each order.
  static void SumOne(const HarmonicSeries& series, const Station& at, double* work,
                     const OrderSums& sums);
  /// The sums of the first `latitudes` of kLatitudes stations, of stride kLatitudes, from one pass
  /// over the coefficients.
  static void SumGroup(const HarmonicSeries& series, const Station* at, std::size_t latitudes,
                       double* work, const OrderSums& sums);

  /// Heights of lambda.count points, the i-th on latitude i of a group; `heights` has kLatitudes
  /// slots.
  static void Scattered(const OrderSums& sums, std::size_t orders, const Longitudes& lambda,
                        double* heights);
  /// Heights of `lambda` on `rows` latitudes from the first of `sums` on, heights of consecutive
  /// rows `rowStride` apart.
  static void Rows(const OrderSums& sums, std::size_t orders, const Longitudes& lambda,
                   std::size_t rows, double* heights, std::size_t rowStride);
};

}  // namespace zel_cs::geomath
