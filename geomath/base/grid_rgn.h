#pragma once

#include "geomath/base/rect_rgn.h"
#include "geomath/export.h"

/// A rectangle with the steps of a grid over it, radians.
class GEOMATH_API TGridRgn : public TRectRgn {
 public:
  double latStep = 0;  ///< distance of the rows, radians
  double lonStep = 0;  ///< distance of the columns, radians

  TGridRgn() = default;
  /// The outer nodes and the steps between them, radians.
  TGridRgn(const TRectRgn& region, double latitudeStep, double longitudeStep)
      : TRectRgn(region), latStep(latitudeStep), lonStep(longitudeStep) {}

  /// Rows: extent/step + 1.5 cut to an integer, that is the rounded number of steps plus one.
  /// 0 when the step is 0 or the quotient is not finite or leaves the range of int.
  int GetLatDim() const;
  /// Columns, by the same rule.
  int GetLonDim() const;
  /// Rows times columns; 0 when the product leaves the range of int.
  int GetFullDim() const;
};
