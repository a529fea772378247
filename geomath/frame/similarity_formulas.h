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

/// Seven parameters at a date: metres, radians in the position-vector sense, the dimensionless scale.
struct SimilarityAtDate {
  double tx, ty, tz, rx, ry, rz, s;

  /// In place, target = T + (1 + s)·(source + r × source).
  GEOMATH_INLINE void Forward(double& X, double& Y, double& Z) const {
    const double x = X, y = Y, z = Z;
    X += s * x + (1 + s) * (ry * z - rz * y) + tx;
    Y += s * y + (1 + s) * (rz * x - rx * z) + ty;
    Z += s * z + (1 + s) * (rx * y - ry * x) + tz;
  }

  /// In place, the source of a target. With K = [r]×: (I + K)·(I + r·rᵀ − K) = (1 + |r|²)·I, so that
  ///     source = (d + r·(r·d) − r × d)/q,    d = target − T,    q = (1 + s)·(1 + |r|²).
  GEOMATH_INLINE void Inverse(double& X, double& Y, double& Z) const {
    const double x = X - tx, y = Y - ty, z = Z - tz;
    const double r2 = rx * rx + ry * ry + rz * rz, qMinus1 = s + r2 + s * r2;
    const double perQ = 1 / (1 + qMinus1), along = rx * x + ry * y + rz * z;
    X = x + (rx * along - (ry * z - rz * y) - qMinus1 * x) * perQ;
    Y = y + (ry * along - (rz * x - rx * z) - qMinus1 * y) * perQ;
    Z = z + (rz * along - (rx * y - ry * x) - qMinus1 * z) * perQ;
  }
};

/// The parameters and the date at which they hold.
struct RunningSimilarity {
  RunningVector shift, rotation;
  double scale, scaleRate;
  double epoch;

  GEOMATH_INLINE SimilarityAtDate At(double date) const {
    const double years = date - epoch;
    return {shift.At(0, years),       shift.At(1, years),    shift.At(2, years),
            rotation.At(0, years),    rotation.At(1, years), rotation.At(2, years),
            scale + scaleRate * years};
  }
};

/// Conversions of points at one date, and of points at the dates of the fourth column.
struct SimilarityForward : SimilarityAtDate {
  static constexpr std::size_t kColumns = 3;

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z) const {
    Forward(X, Y, Z);
  }
};

struct SimilarityInverse : SimilarityAtDate {
  static constexpr std::size_t kColumns = 3;

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z) const {
    Inverse(X, Y, Z);
  }
};

struct DatedSimilarityForward : RunningSimilarity {
  static constexpr std::size_t kColumns = 4;

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z, double& t) const {
    At(t).Forward(X, Y, Z);
  }
};

struct DatedSimilarityInverse : RunningSimilarity {
  static constexpr std::size_t kColumns = 4;

  template <class Math>
  GEOMATH_INLINE void Convert(double& X, double& Y, double& Z, double& t) const {
    At(t).Inverse(X, Y, Z);
  }
};

}  // namespace zel_cs::geomath
