#include "geomath/design/linear_distortion.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/batch.h"
#include "geomath/design/weight_rounding.h"
#include "geomath/geodesic/distortion.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

std::size_t LinearDistortion(const TGeoProj& proj, const double* b, const double* l,
                             const double* h, double* delta, std::size_t count) {
  const Ellipsoid& ellipsoid = proj.GetEllipsoid();
  std::size_t found = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    const std::size_t size = std::min(kBatchBlock, count - start);
    Distortion at[kBatchBlock];
    DistortionAt(proj, b + start, l + start, at, size);
    for (std::size_t i = 0; i < size; ++i) {
      const double radius = ellipsoid.GetGaussianRadius(b[start + i]);
      const double k = std::sqrt(std::abs(at[i].arealScale));
      const double value = k * radius / (radius + h[start + i]) - 1;
      delta[start + i] = std::isfinite(value) ? value : kNaN;
      found += std::isfinite(value);
    }
  }
  return found;
}

DistortionFigures::DistortionFigures(std::span<const double> deltas,
                                     std::span<const double> weights)
    : least_(kNaN), greatest_(kNaN), mean_(kNaN), rootMeanSquare_(kNaN) {
  double weight = 0, sum = 0, squares = 0;
  sorted_.reserve(deltas.size());
  for (std::size_t i = 0; i < deltas.size(); ++i) {
    const double delta = deltas[i], w = weights.empty() ? 1 : weights[i];
    if (std::isnan(delta) || !(w > 0)) continue;
    if (!(least_ <= delta)) least_ = delta;
    if (!(greatest_ >= delta)) greatest_ = delta;
    weight += w;
    sum += w * delta;
    squares += w * delta * delta;
    sorted_.push_back({std::abs(delta), w});
  }
  if (sorted_.empty()) return;
  mean_ = sum / weight;
  rootMeanSquare_ = std::sqrt(squares / weight);
  std::stable_sort(sorted_.begin(), sorted_.end(), [](const Weighted& one, const Weighted& other) {
    return one.size < other.size;
  });
  double upTo = 0;
  for (Weighted& each : sorted_) each.upTo = upTo += each.upTo;
}

double DistortionFigures::Largest() const { return sorted_.empty() ? kNaN : sorted_.back().size; }

double DistortionFigures::Percentile(double share) const {
  if (sorted_.empty()) return kNaN;
  const double wanted = (share - kWeightRounding) * sorted_.back().upTo;
  const auto at =
      std::lower_bound(sorted_.begin(), sorted_.end(), wanted,
                       [](const Weighted& each, double weight) { return each.upTo < weight; });
  return at == sorted_.end() ? sorted_.back().size : at->size;
}

double DistortionFigures::ShareWithin(double limit) const {
  if (sorted_.empty()) return kNaN;
  const auto beyond =
      std::upper_bound(sorted_.begin(), sorted_.end(), limit,
                       [](double size, const Weighted& each) { return size < each.size; });
  return beyond == sorted_.begin() ? 0 : std::prev(beyond)->upTo / sorted_.back().upTo;
}

}  // namespace zel_cs::geomath
