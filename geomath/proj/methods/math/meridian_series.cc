#include "geomath/proj/methods/math/meridian_series.h"

#include <cmath>

namespace zel_cs::geomath {
namespace {

CosinePowerSeries FootpointSeries(double n) {
  const double n2 = n * n, n3 = n2 * n, n4 = n2 * n2;
  return {3.0 / 2 * n - 27.0 / 32 * n3, 21.0 / 16 * n2 - 55.0 / 32 * n4, 151.0 / 96 * n3,
          1097.0 / 512 * n4};
}

}  // namespace

CosinePowerSeries::CosinePowerSeries(double c2, double c4, double c6, double c8)
    : p0_(2 * (c2 - 2 * c4 + 3 * c6 - 4 * c8)),
      p2_(8 * (c4 - 4 * c6 + 10 * c8)),
      p4_(32 * (c6 - 6 * c8)),
      p6_(128 * c8) {}

MeridianSeries::MeridianSeries(const Ellipsoid& ell)
    : r(ell.a * (1 - ell.n) * (1 - ell.n * ell.n) *
        (1 + 9.0 / 4 * (ell.n * ell.n) + 225.0 / 64 * (ell.n * ell.n * ell.n * ell.n))),
      u2(-3.0 / 2 * ell.n + 9.0 / 16 * (ell.n * ell.n * ell.n)),
      u4(15.0 / 16 * (ell.n * ell.n) - 15.0 / 32 * (ell.n * ell.n * ell.n * ell.n)),
      u6(-35.0 / 48 * (ell.n * ell.n * ell.n)),
      u8(315.0 / 512 * (ell.n * ell.n * ell.n * ell.n)),
      arc(u2, u4, u6, u8),
      footpoint(FootpointSeries(ell.n)) {}

}  // namespace zel_cs::geomath
