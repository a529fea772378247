#pragma once

#include <array>
#include <cstddef>

#include "geomath/export.h"

namespace zel_cs::geomath {

/// How much heights differ with distance: γ(h) = slope·h^exponent, h in grid steps, γ in m². No
/// nugget, so that the estimate passes through the nodes.
struct GEOMATH_API KrigingVariogram {
  double slope;     ///< m² at a distance of one step
  double exponent;  ///< between 0 and 2, both excluded

  /// γ at a distance of `h` steps, m².
  double At(double h) const;
};

/// Ordinary kriging from the 4 × 4 nodes at (0 … 3, 0 … 3) (Matheron 1963; Cressie 1993, Statistics
/// for Spatial Data, section 3.2). The weights do not depend on the variogram's slope, so that one
/// inverse of the kriging matrix serves every stencil.
class GEOMATH_API OrdinaryKriging {
 public:
  static constexpr std::size_t kNodes = 16;  ///< nodes of a stencil

  /// What the method says of one position: a weight for each node, row by row, which sum to 1, and
  /// the estimation variance for a slope of 1.
  struct Estimate {
    std::array<double, kNodes> weights;  ///< of the nodes, row by row
    double unitVariance;                 ///< times a slope in m²: the variance, m²
  };

  /// Inverts the kriging matrix of an exponent between 0 and 2, both excluded.
  explicit OrdinaryKriging(double exponent);

  /// At (x, y) in steps from the first node.
  Estimate At(double x, double y) const;

  /// The inverse of the kriging matrix at rows and columns 0 … 16, the nodes and Lagrange's multiplier.
  double Inverse(std::size_t row, std::size_t column) const { return inverse_[row][column]; }

 private:
  static constexpr std::size_t kSize = kNodes + 1;  // the nodes and Lagrange's multiplier

  KrigingVariogram unit_;  // slope 1
  std::array<std::array<double, kSize>, kSize> inverse_;
};

}  // namespace zel_cs::geomath
