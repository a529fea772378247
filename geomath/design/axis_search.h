#pragma once

#include <array>
#include <vector>

#include "geomath/design/design_watch.h"
#include "geomath/design/ground_points.h"
#include "geomath/design/scale_fit.h"

namespace zel_cs::geomath {

/// A zone, and the criterion's value of it.
struct ZoneFit {
  ZoneDefinition zone;
  double value;
};

/// Finds the axis of one family for a set of points. The scale follows from the axis (ScaleFitter), so
/// that one or two unknowns remain. A search over the whole window on a sample of the points comes
/// first, since the azimuth of an oblique axis has several minima; then all points: least squares by
/// Gauss-Newton steps (Vonderohe and Dennis 2021), the largest |δ| by exchange (the sample gains the
/// points that exceed it until none does), percentiles by a pattern search, on at most 50,000 of them.
/// To first order log m is linear in the offset of an axis, so that the largest |δ| has one minimum
/// there. Nothing is random.
class AxisSearch {
 public:
  AxisSearch(const GroundPoints& points, ZoneFamily family, const DesignCriterion& criterion,
             DesignWatch& watch);

  /// The best axis with its scale; of no use when the watch has stopped the search. The value is
  /// infinite where no axis serves all points.
  ZoneFit Find();
  /// The zone with its axis through the middle of the extent; an oblique one along the found axis.
  ZoneFit Centred(const ZoneDefinition& found);

 private:
  // Offsets in metres: of the meridian to the east; of the parallel to the north; of the point to the
  // north and to the east. Of an oblique axis the azimuth in radians and the offset to its right.
  using Axis = std::array<double, 2>;

  ZoneDefinition ZoneAt(const Axis& axis) const;
  ZoneFit FitAt(const GroundPoints& points, const Axis& axis);
  double ValueAt(const GroundPoints& points, const Axis& axis);

  Axis SearchWindow(const GroundPoints& sample);
  Axis SearchAbout(const GroundPoints& sample, const Axis& middle, const Axis& half, int scans,
                   double fine);
  Axis RefineSquare(Axis axis);
  Axis RefineLargest(Axis axis, GroundPoints sample);
  Axis RefinePercentile(const GroundPoints& sample, Axis axis);
  bool GaussNewtonStep(Axis& axis);

  const GroundPoints& points_;
  const GroundFrame frame_;
  const ZoneFamily family_;
  const DesignCriterion criterion_;
  ScaleFitter fitter_;
  DesignWatch& watch_;
  const int unknowns_;
  std::vector<double> m_;
};

}  // namespace zel_cs::geomath
