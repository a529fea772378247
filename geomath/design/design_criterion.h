#pragma once

namespace zel_cs::geomath {

/// What a design makes small.
enum class DesignMeasure : unsigned char {
  square,      ///< the weighted root mean square of δ (Vonderohe and Dennis 2021)
  largest,     ///< the largest |δ|
  percentile,  ///< a percentile of |δ|
  range,       ///< the largest less the smallest δ, with the scale that makes the weighted mean 0
};

/// A measure, and what belongs to it.
struct DesignCriterion {
  DesignMeasure measure = DesignMeasure::square;  ///< of the distortions
  /// For `percentile`: the share of the weight that has no larger |δ|, above 0 and at most 1.
  double percentile = 0.95;
};

}  // namespace zel_cs::geomath
