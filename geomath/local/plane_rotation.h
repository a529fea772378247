#pragma once

#include "geomath/local/identical_point.h"
#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// Rotation of a (north, east) pair by θ: N' = cos θ·N − sin θ·E, E' = sin θ·N + cos θ·E.
struct PlaneRotation {
  explicit PlaneRotation(double theta) {
    if (std::abs(theta) < simd::kMaxAngle)
      simd::BatchMath::SinCos(theta, sin, cos);
    else
      simd::Scalar::SinCos(theta, sin, cos);
  }

  GEOMATH_INLINE PlaneVector Turn(double n, double e) const {
    return {cos * n - sin * e, sin * n + cos * e};
  }
  GEOMATH_INLINE PlaneVector TurnBack(double n, double e) const {
    return {cos * n + sin * e, cos * e - sin * n};
  }

  double cos, sin;
};

}  // namespace zel_cs::geomath
