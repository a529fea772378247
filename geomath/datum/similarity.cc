#include "geomath/datum/similarity.h"

#include "geomath/simd/elementary.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

// Without cancellation for small angles.
double OneMinusCos(double angle) {
  const double sinHalf = Sin(angle / 2);
  return 2 * sinHalf * sinHalf;
}

}  // namespace

Similarity::Similarity(const TAbstractPoint3<double>& shift, const TAbstractPoint3<double>& angles,
                       double scale)
    : toLocal_{shift[0], shift[1], shift[2], {}}, toWgs84_{shift[0], shift[1], shift[2], {}} {
  const double s0 = Sin(angles[0]), c0 = Cos(angles[0]), v0 = OneMinusCos(angles[0]);
  const double s1 = Sin(angles[1]), c1 = Cos(angles[1]), v1 = OneMinusCos(angles[1]);
  const double s2 = Sin(angles[2]), c2 = Cos(angles[2]), v2 = OneMinusCos(angles[2]);
  // R − I; on its diagonal c·c′ − 1 = v·v′ − v − v′.
  const double turn[3][3] = {
      {v1 * v2 - v1 - v2, -c1 * s2, s1},
      {c0 * s2 + s0 * s1 * c2, v0 * v2 - v0 - v2 - s0 * s1 * s2, -s0 * c1},
      {s0 * s2 - c0 * s1 * c2, s0 * c2 + c0 * s1 * s2, v0 * v1 - v0 - v1},
  };
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      const double unit = i == j ? 1 : 0;
      toLocal_.m[i][j] = (turn[i][j] - scale * unit) / (1 + scale);
      toWgs84_.m[i][j] = turn[j][i] + scale * (turn[j][i] + unit);
    }
}

TAbstractPoint3<double> Similarity::ToLocal(const TAbstractPoint3<double>& wgs84) const {
  TAbstractPoint3<double> p = wgs84;
  toLocal_.Convert<simd::Scalar>(p[0], p[1], p[2]);
  return p;
}

TAbstractPoint3<double> Similarity::ToWgs84(const TAbstractPoint3<double>& local) const {
  TAbstractPoint3<double> p = local;
  toWgs84_.Convert<simd::Scalar>(p[0], p[1], p[2]);
  return p;
}

}  // namespace zel_cs::geomath
