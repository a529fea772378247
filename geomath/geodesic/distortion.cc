#include "geomath/geodesic/distortion.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zel_cs::geomath {

UnitImages UnitImagesOf(const GridDerivatives& d, const Ellipsoid& ell, double b) {
  const double s = std::sin(b), w2 = 1 - ell.e2 * (s * s), N = ell.a / std::sqrt(w2);
  const double M = N * (1 - ell.e2) / w2, parallel = N * std::cos(b);
  return {d.northB / M, d.eastB / M, d.northL / parallel, d.eastL / parallel};
}

bool DistortionAt(const TGeoProj& proj, double b, double l, Distortion& distortion) {
  GridDerivatives derivatives;
  if (!proj.ForwardDerivatives(b, l, derivatives)) return false;
  const auto [nn, ne, en, ee] = UnitImagesOf(derivatives, proj.GetEllipsoid(), b);
  // a' and b' of 4-12 and 4-13 as sums of squares: no digits of a conformal map cancel.
  const double upright = std::hypot(nn + ee, ne - en), mirrored = std::hypot(nn - ee, ne + en);
  const double sum = std::max(upright, mirrored), difference = std::min(upright, mirrored);
  distortion = {.meridianScale = std::hypot(nn, ne),
                .parallelScale = std::hypot(en, ee),
                .arealScale = nn * ee - ne * en,
                .convergence = -std::atan2(ne, nn),
                .angularDistortion = 2 * std::asin(difference / sum),  // 4-1
                .semiMajor = (sum + difference) / 2,
                .semiMinor = (sum - difference) / 2};
  return true;
}

bool DistortionAtGrid(const TGeoProj& proj, double n, double e, Distortion& distortion) {
  return proj.InversePoint(n, e) && DistortionAt(proj, n, e, distortion);
}

std::size_t DistortionAt(const TGeoProj& proj, const double* b, const double* l,
                         Distortion* distortions, std::size_t count) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  std::size_t found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (DistortionAt(proj, b[i], l[i], distortions[i]))
      ++found;
    else
      distortions[i] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
  }
  return found;
}

}  // namespace zel_cs::geomath
