#pragma once

#include <vector>

#include "geomath/adjust/site_adjustment.h"
#include "geomath/export.h"

namespace zel_cs::geomath {

/// How a point moved between two epochs.
struct PointMovement {
  double shift[3];     ///< second epoch less first, of the points that stayed together, metres
  double ratio;        ///< χ² of the shift, one for each coordinate on average
  double probability;  ///< of such a ratio when the point has not moved
  bool moved;          ///< whether it was found to have moved
};

/// A point in two epochs, metres, with the covariances of each.
struct EpochPoint {
  double first[3] = {};                ///< in the first epoch
  double second[3] = {};               ///< in the second
  double firstCovariance[3][3] = {};   ///< metres²
  double secondCovariance[3][3] = {};  ///< metres²
};

/// Which points of one control have moved between two epochs: the congruence test (Pelzer 1971;
/// Niemeier 2008, Ausgleichungsrechnung, section 11.2). The points that are held to be stable are
/// tested together with the epochs' common shift, rotation and scale taken out as `model` says (none:
/// the coordinates are compared as they are); while the test fails at the level alpha, the point that
/// explains most of it is taken out. Covariances are known. Empty when the points do not determine the
/// model (two fewer stable points than it takes).
GEOMATH_API std::vector<PointMovement> FindMovements(const std::vector<EpochPoint>& points,
                                                     SiteModel model = SiteModel::none,
                                                     double alpha = 0.05);

}  // namespace zel_cs::geomath
