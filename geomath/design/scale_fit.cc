#include "geomath/design/scale_fit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "geomath/design/linear_distortion.h"
#include "geomath/design/weight_rounding.h"

namespace zel_cs::geomath {
namespace {

// Sums over x = m − 1, which has more digits than m.
struct Moments {
  double weight = 0, x = 0, xx = 0;
  double least = 0, greatest = 0;  // of x

  Moments(std::span<const double> m, std::span<const double> weights)
      : least(m[0] - 1), greatest(m[0] - 1) {
    for (std::size_t i = 0; i < m.size(); ++i) {
      const double xi = m[i] - 1, w = weights[i];
      weight += w;
      x += w * xi;
      xx += w * xi * xi;
      least = std::min(least, xi);
      greatest = std::max(greatest, xi);
    }
  }

  // The mean square of k0·m − 1 = t + k0·x with t = k0 − 1.
  double RootMeanSquare(double t) const {
    const double k0 = 1 + t;
    return std::sqrt(std::max(t * t + (2 * t * k0 * x + k0 * k0 * xx) / weight, 0.0));
  }
};

// The middle of two factors, and the |δ| that both have with it.
ScaleFit Middle(double least, double greatest) {
  const double sum = least + greatest;
  return {(greatest - least) / sum, 2 / sum};
}

}  // namespace

ScaleFit ScaleFitter::Best(std::span<const double> m, std::span<const double> weights) {
  if (criterion_.measure == DesignMeasure::percentile) return BestPercentile(m, weights);
  const Moments s(m, weights);
  switch (criterion_.measure) {
    case DesignMeasure::largest:
      return Middle(1 + s.least, 1 + s.greatest);
    case DesignMeasure::range: {
      const double k0 = s.weight / (s.weight + s.x);
      return {k0 * (s.greatest - s.least), k0};
    }
    default: {
      // Σw·m·(k0·m − 1) = 0.
      const double t = -(s.x + s.xx) / (s.weight + 2 * s.x + s.xx);
      return {s.RootMeanSquare(t), 1 + t};
    }
  }
}

ScaleFit ScaleFitter::BestPercentile(std::span<const double> m, std::span<const double> weights) {
  sorted_.resize(m.size());
  double total = 0;
  for (std::size_t i = 0; i < m.size(); ++i) {
    sorted_[i] = {m[i], weights[i]};
    total += weights[i];
  }
  std::sort(sorted_.begin(), sorted_.end(), [](const Weighted& one, const Weighted& other) {
    return one.m != other.m ? one.m < other.m : one.weight < other.weight;
  });
  const double wanted = total * (criterion_.percentile - kWeightRounding);
  ScaleFit best = Middle(sorted_.front().m, sorted_.back().m);
  double held = 0;  // by the interval from `first` to before `end`
  for (std::size_t first = 0, end = 0; first < sorted_.size(); ++first) {
    while (end < sorted_.size() && held < wanted) held += sorted_[end++].weight;
    if (held < wanted) break;
    const ScaleFit fit = Middle(sorted_[first].m, sorted_[end - 1].m);
    if (fit.value < best.value) best = fit;
    held -= sorted_[first].weight;
  }
  return best;
}

double ScaleFitter::Value(double scale, std::span<const double> m,
                          std::span<const double> weights) const {
  if (criterion_.measure == DesignMeasure::percentile) {
    std::vector<double> delta(m.size());
    for (std::size_t i = 0; i < m.size(); ++i) delta[i] = scale * m[i] - 1;
    return DistortionFigures(delta, weights).Percentile(criterion_.percentile);
  }
  const Moments s(m, weights);
  const double t = scale - 1;
  if (criterion_.measure == DesignMeasure::square) return s.RootMeanSquare(t);
  const double least = t + scale * s.least, greatest = t + scale * s.greatest;
  return criterion_.measure == DesignMeasure::range ? greatest - least
                                                    : std::max(std::abs(least), std::abs(greatest));
}

}  // namespace zel_cs::geomath
