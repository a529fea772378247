#include "geomath/datum/similarity.h"

#include <cmath>

namespace zel_cs::geomath {

Similarity::Similarity(const TAbstractPoint3<double>& shift, const TAbstractPoint3<double>& angles,
                       double scale)
    : tX_(shift[0]), tY_(shift[1]), tZ_(shift[2]), factor_(1 + scale) {
  const double s0 = std::sin(angles[0]), c0 = std::cos(angles[0]);
  const double s1 = std::sin(angles[1]), c1 = std::cos(angles[1]);
  const double s2 = std::sin(angles[2]), c2 = std::cos(angles[2]);
  const double rows[3][3] = {
      {c1 * c2, -c1 * s2, s1},
      {c0 * s2 + s0 * s1 * c2, c0 * c2 - s0 * s1 * s2, -s0 * c1},
      {s0 * s2 - c0 * s1 * c2, s0 * c2 + c0 * s1 * s2, c0 * c1},
  };
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) r_[i][j] = rows[i][j];
}

TAbstractPoint3<double> Similarity::ToLocal(const TAbstractPoint3<double>& wgs84) const {
  TAbstractPoint3<double> p = wgs84;
  ToLocal(p[0], p[1], p[2]);
  return p;
}

TAbstractPoint3<double> Similarity::ToWgs84(const TAbstractPoint3<double>& local) const {
  TAbstractPoint3<double> p = local;
  ToWgs84(p[0], p[1], p[2]);
  return p;
}

}  // namespace zel_cs::geomath
