#include "geomath/proj/methods/math/double_stereographic.h"

#include <cmath>

#include "geomath/base/curvature.h"
#include "geomath/simd/scalar.h"

// Symbols of EPSG Guidance Note 7-2, method 9809:
//   χ Λ  chi Lambda  latitude and longitude on the conformal sphere, Λ = n·(λ − λ0)
//   R n  sphere_.R sphere_.alpha     B  Denominator     ν0  prime-vertical radius at the origin
namespace zel_cs::geomath {

DoubleStereographic::DoubleStereographic(const Ellipsoid& ell, double lat0, double lon0,
                                         double scale)
    : sphere_(ell, lat0),
      phi0_(lat0),
      lambda0_(lon0),
      sinChi0_(Sin(sphere_.chi0)),
      cosChi0_(Cos(sphere_.chi0)),
      diameter_(2 * scale * sphere_.R),
      scaleAtOrigin_(diameter_ * sphere_.alpha / PrimeVerticalRadius(ell, lat0)) {
  constexpr double kLeast = 1;  // metres
  const double size = std::abs(diameter_);
  servesColumns_ = sphere_.ServesColumns() && std::isfinite(sphere_.K) && size > kLeast &&
                   size < kLargestCoordinate;
}

PointFactors DoubleStereographic::Factors(const SpherePoint& at, double cosPhi) const {
  const auto& [chi, Lambda] = at;
  return {scaleAtOrigin_ * chi.cos / (cosPhi * Denominator(at)),
          Atan((sinChi0_ + chi.sin) * Lambda.sin /
               ((1 + sinChi0_ * chi.sin) * Lambda.cos + cosChi0_ * chi.cos))};
}

PointFactors DoubleStereographic::Factors(const Image& image) const {
  return Factors(image.at, image.cosPhi);
}

PointFactors DoubleStereographic::Factors(const Vector& v, double phi) const {
  const double cosChi = v.chi.cos;
  const SineCosine Lambda =
      cosChi > 0 ? SineCosine{v.across / cosChi, v.along / cosChi} : SineCosine{0, 1};
  return Factors({v.chi, Lambda}, Cos(phi));
}

}  // namespace zel_cs::geomath
