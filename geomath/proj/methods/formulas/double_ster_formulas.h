#pragma once

#include <cmath>

#include "geomath/proj/methods/math/double_stereographic.h"

namespace zel_cs::geomath {

/// DoubleStereographic with false coordinates.
struct DoubleSterFormulas {
  DoubleStereographic plane;
  double fEast, fNorth;

  /// Both return what the factors follow from.
  template <class Math>
  GEOMATH_INLINE DoubleStereographic::ImageOf<typename Math::Real> Forward(
      typename Math::Real& b, typename Math::Real& l) const {
    const auto image = plane.Project<Math>(b, l);
    b = fNorth + image.north;
    l = fEast + image.east;
    return image;
  }
  template <class Math>
  GEOMATH_INLINE DoubleStereographic::Vector Inverse(double& n, double& e) const {
    const auto vector = plane.ToSphere(n - fNorth, e - fEast);
    plane.Unproject<Math>(vector, n, e);
    return vector;
  }

  GEOMATH_INLINE bool ServesForward(double b, double l) const { return plane.ServesForward(b, l); }
  GEOMATH_INLINE bool ServesInverse(double n, double e) const {
    return plane.ServesInverse(n - fNorth, e - fEast);
  }
};

}  // namespace zel_cs::geomath
