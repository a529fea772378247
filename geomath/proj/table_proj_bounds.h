#pragma once

#include "geomath/export.h"

namespace zel_cs::geomath {

/// A rectangle in the units of the values that it bounds.
class GEOMATH_API TTableProjBounds {
 public:
  /// All edges 0: nothing is inside.
  TTableProjBounds() = default;
  /// The edges.
  TTableProjBounds(double xMin, double yMin, double xMax, double yMax)
      : edges_{xMin, yMin, xMax, yMax} {}

  /// Whether the point is strictly inside; a point on an edge, or with a NaN, is not.
  virtual bool Inside(double x, double y) const;

  /// x-min, y-min, x-max, y-max for 0 to 3. Unchecked.
  double& operator[](int i) { return edges_[i]; }
  double operator[](int i) const { return edges_[i]; }
  operator double*() { return edges_; }
  operator const double*() const { return edges_; }

 private:
  double edges_[4] = {};
};

}  // namespace zel_cs::geomath
