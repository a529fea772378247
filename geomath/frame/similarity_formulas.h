#pragma once

#include <cstddef>

#include "geomath/simd/kernel.h"

/// The small-angle similarity whose parameters run with time, for one point; the kernels of columns
/// are made of these statements.
namespace zel_cs::geomath {

/// Three numbers of one kind and what they grow by in a year.
struct RunningVector {
  double value[3], rate[3];

  GEOMATH_INLINE double At(int i, double years) const { return value[i] + rate[i] * years; }
};

/// The parameters: metres, radians in the position-vector sense, the dimensionless scale, and the
/// date at which they hold.
struct RunningSimilarity {
  RunningVector shift, rotation;
  double scale, scaleRate;
  double epoch;
};

/// In place, target = T + (1 + s)·(source + r × source), with the parameters at the date t.
struct SimilarityForward : RunningSimilarity {
  static constexpr std::size_t kColumns = 4;

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z, double& t) const {
    const double years = t - epoch, s = scale + scaleRate * years;
    const double rx = rotation.At(0, years), ry = rotation.At(1, years), rz = rotation.At(2, years);
    const double x = X, y = Y, z = Z;
    X += s * x + (1 + s) * (ry * z - rz * y) + shift.At(0, years);
    Y += s * y + (1 + s) * (rz * x - rx * z) + shift.At(1, years);
    Z += s * z + (1 + s) * (rx * y - ry * x) + shift.At(2, years);
  }
};

/// In place, the source of a target. With K = [r]×: (I + K)·(I + r·rᵀ − K) = (1 + |r|²)·I, so that
///     source = (d + r·(r·d) − r × d)/q,    d = target − T,    q = (1 + s)·(1 + |r|²).
struct SimilarityInverse : RunningSimilarity {
  static constexpr std::size_t kColumns = 4;

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z, double& t) const {
    const double years = t - epoch, s = scale + scaleRate * years;
    const double rx = rotation.At(0, years), ry = rotation.At(1, years), rz = rotation.At(2, years);
    const double x = X - shift.At(0, years), y = Y - shift.At(1, years), z = Z - shift.At(2, years);
    const double r2 = rx * rx + ry * ry + rz * rz, qMinus1 = s + r2 + s * r2;
    const double perQ = 1 / (1 + qMinus1), along = rx * x + ry * y + rz * z;
    X = x + (rx * along - (ry * z - rz * y) - qMinus1 * x) * perQ;
    Y = y + (ry * along - (rz * x - rx * z) - qMinus1 * y) * perQ;
    Z = z + (rz * along - (rx * y - ry * x) - qMinus1 * z) * perQ;
  }
};

}  // namespace zel_cs::geomath
