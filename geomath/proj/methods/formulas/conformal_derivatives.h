#pragma once

#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

/// The derivatives of a conformal map from its scale and convergence, of a class whose tables or
/// polynomials say more about them than its statements do. By the ellipsoid that the class reports.
struct ConformalDerivatives {
  double a, e2;

  /// GridDerivatives in its order at the latitude with this sine and cosine.
  template <class Math>
  GEOMATH_INLINE void At(double sinPhi, double cosPhi, double scale, double convergence,
                         double& northB, double& eastB, double& northL, double& eastL) const {
    const double w2 = 1 - e2 * (sinPhi * sinPhi);
    const double N = a / Math::Sqrt(w2), M = N * (1 - e2) / w2;
    double sinGamma, cosGamma;
    Math::SinCos(convergence, sinGamma, cosGamma);
    const double north = scale * cosGamma, east = scale * sinGamma, parallel = N * cosPhi;
    northB = M * north;
    eastB = -(M * east);
    northL = parallel * east;
    eastL = parallel * north;
  }
};

}  // namespace zel_cs::geomath
