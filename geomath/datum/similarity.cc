#include "geomath/datum/similarity.h"

#include <cmath>

#include "geomath/simd/elementary.h"

namespace zel_cs::geomath {

Similarity::Similarity(const TAbstractPoint3<double>& shift, const TAbstractPoint3<double>& angles,
                       double scale)
    : toLocal_{shift[0], shift[1], shift[2], {}}, toWgs84_{shift[0], shift[1], shift[2], {}} {
  const double s0 = std::sin(angles[0]), c0 = std::cos(angles[0]);
  const double s1 = std::sin(angles[1]), c1 = std::cos(angles[1]);
  const double s2 = std::sin(angles[2]), c2 = std::cos(angles[2]);
  const double R[3][3] = {
      {c1 * c2, -c1 * s2, s1},
      {c0 * s2 + s0 * s1 * c2, c0 * c2 - s0 * s1 * s2, -s0 * c1},
      {s0 * s2 - c0 * s1 * c2, s0 * c2 + c0 * s1 * s2, c0 * c1},
  };
  const double factor = 1 + scale;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      toLocal_.m[i][j] = R[i][j] / factor;
      toWgs84_.m[i][j] = R[j][i] * factor;
    }
}

TAbstractPoint3<double> Similarity::ToLocal(const TAbstractPoint3<double>& wgs84) const {
  TAbstractPoint3<double> p = wgs84;
  toLocal_.Convert<simd::Libm>(p[0], p[1], p[2]);
  return p;
}

TAbstractPoint3<double> Similarity::ToWgs84(const TAbstractPoint3<double>& local) const {
  TAbstractPoint3<double> p = local;
  toWgs84_.Convert<simd::Libm>(p[0], p[1], p[2]);
  return p;
}

}  // namespace zel_cs::geomath
