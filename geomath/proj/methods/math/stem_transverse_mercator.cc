#include "geomath/proj/methods/math/stem_transverse_mercator.h"

#include <cmath>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/math/tm_longitude_series.h"

// Symbols of Stem 1989: S0 origin_   R scaled prime-vertical radius   L Δλ·cos φ   Q ΔE/R
namespace zel_cs::geomath {
namespace {

constexpr double kEta2T4 = 90;  // see TmInverseSeries

}  // namespace

StemTransverseMercator::StemTransverseMercator(const Ellipsoid& ell, double scale, double lat0)
    : e2_(ell.e2),
      ep2_(ell.ep2),
      k0_(scale),
      meridian_(ell),
      aK0_(scale * ell.a),
      origin_(scale * meridian_.Arc(lat0)) {}

StemTransverseMercator::Plane StemTransverseMercator::Forward(double phi, double deltaLambda,
                                                              PointFactors* factors) const {
  const double s = std::sin(phi), c = std::cos(phi);
  const TmLatitude at(s, c, ep2_);
  const double L = deltaLambda * c;
  const double R = aK0_ / std::sqrt(1 - e2_ * (s * s));
  if (factors) *factors = {.scale = k0_ * TmScale(at, L), .convergence = TmConvergence(at, L)};
  const TmOffset offset = TmForwardSeries(at, L);
  return {k0_ * meridian_.Arc(phi, s, c) - origin_ + R * offset.north, R * offset.east};
}

StemTransverseMercator::Geographic StemTransverseMercator::Inverse(double north, double east,
                                                                   PointFactors* factors) const {
  const double phiF = meridian_.Footpoint((north + origin_) / k0_);
  const double s = std::sin(phiF), c = std::cos(phiF);
  const TmLatitude at(s, c, ep2_);
  const double Q = east * std::sqrt(1 - e2_ * (s * s)) / aK0_;
  if (factors) {
    *factors = {.scale = k0_ * TmScaleFromFootpoint(at, Q),
                .convergence = TmConvergenceFromFootpoint(at, Q)};
  }
  const TmFootpointStep step = TmInverseSeries(at, Q, kEta2T4);
  return {phiF + step.latitude, step.longitude / c};
}

}  // namespace zel_cs::geomath
