#include "geomath/datum/similarity.h"

#include <cmath>

namespace zel_cs::geomath {

Similarity::Similarity(const TAbstractPoint3<double>& shift, const TAbstractPoint3<double>& angles,
                       double scale)
    : shift_(shift), factor_(1 + scale) {
  const double s0 = std::sin(angles[0]), c0 = std::cos(angles[0]);
  const double s1 = std::sin(angles[1]), c1 = std::cos(angles[1]);
  const double s2 = std::sin(angles[2]), c2 = std::cos(angles[2]);
  rows_[0] = {c1 * c2, -c1 * s2, s1};
  rows_[1] = {c0 * s2 + s0 * s1 * c2, c0 * c2 - s0 * s1 * s2, -s0 * c1};
  rows_[2] = {s0 * s2 - c0 * s1 * c2, s0 * c2 + c0 * s1 * s2, c0 * c1};
  for (int i = 0; i < 3; ++i) columns_[i] = {rows_[0][i], rows_[1][i], rows_[2][i]};
}

TAbstractPoint3<double> Similarity::ToLocal(const TAbstractPoint3<double>& wgs84) const {
  const TAbstractPoint3<double> d = wgs84 - shift_;
  return {rows_[0] * d / factor_, rows_[1] * d / factor_, rows_[2] * d / factor_};
}

TAbstractPoint3<double> Similarity::ToWgs84(const TAbstractPoint3<double>& local) const {
  const TAbstractPoint3<double> rotated{columns_[0] * local, columns_[1] * local,
                                        columns_[2] * local};
  return shift_ + rotated * factor_;
}

}  // namespace zel_cs::geomath
