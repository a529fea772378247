#pragma once

#include <span>
#include <vector>

#include "geomath/design/design_criterion.h"

namespace zel_cs::geomath {

/// A scale, and the criterion's value with it.
struct ScaleFit {
  double value, scale;
};

/// The scale k0 of a zone for a criterion of δ = k0·m − 1, m being the distortion factors (1 + δ) that
/// the zone has with scale 1. Weights are positive.
class ScaleFitter {
 public:
  explicit ScaleFitter(const DesignCriterion& criterion) : criterion_(criterion) {}

  /// The best scale, which is exact: linear least squares; the middle of the extreme factors; the middle
  /// of the shortest interval that holds the share of the weight; the mean.
  ScaleFit Best(std::span<const double> m, std::span<const double> weights);
  /// The value of a given scale.
  double Value(double scale, std::span<const double> m, std::span<const double> weights) const;

 private:
  ScaleFit BestPercentile(std::span<const double> m, std::span<const double> weights);

  struct Weighted {
    double m, weight;
  };
  DesignCriterion criterion_;
  std::vector<Weighted> sorted_;  // kept between calls for its memory
};

}  // namespace zel_cs::geomath
