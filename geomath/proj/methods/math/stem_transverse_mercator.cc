#include "geomath/proj/methods/math/stem_transverse_mercator.h"

#include <cmath>

#include "geomath/proj/point_factors.h"

namespace zel_cs::geomath {

StemTransverseMercator::StemTransverseMercator(const Ellipsoid& ell, double scale, double lat0)
    : e2_(ell.e2),
      ep2_(ell.ep2),
      k0_(scale),
      meridian_(ell),
      aK0_(scale * ell.a),
      rK0_(scale * meridian_.r),
      origin_(scale * meridian_.Arc(lat0)) {}

StemTransverseMercator::Plane StemTransverseMercator::Forward(double phi, double deltaLambda,
                                                              PointFactors* factors) const {
  const auto [plane, at, L] = std::abs(phi) < simd::kMaxAngle
                                  ? Project<simd::BatchMath>(phi, deltaLambda)
                                  : Project<simd::Scalar>(phi, deltaLambda);
  if (factors) *factors = {.scale = k0_ * TmScale(at, L), .convergence = TmConvergence(at, L)};
  return plane;
}

StemTransverseMercator::Geographic StemTransverseMercator::Inverse(double north, double east,
                                                                   PointFactors* factors) const {
  const auto [geographic, at, Q] = std::abs(Rectifying(north)) < simd::kMaxAngle
                                       ? Unproject<simd::BatchMath>(north, east)
                                       : Unproject<simd::Scalar>(north, east);
  if (factors) {
    *factors = {.scale = k0_ * TmScaleFromFootpoint(at, Q),
                .convergence = TmConvergenceFromFootpoint(at, Q)};
  }
  return geographic;
}

}  // namespace zel_cs::geomath
