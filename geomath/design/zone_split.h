#pragma once

#include <cstddef>
#include <vector>

#include "geomath/design/zone_design.h"
#include "geomath/export.h"

namespace zel_cs::geomath {

/// A zone of several.
struct SplitZone {
  ZoneDefinition zone;              ///< rounded, with its false origin
  double value;                     ///< its largest |δ|, or the percentile
  std::vector<std::size_t> points;  ///< those that it is for, by their index
};

/// Ground in strips, each with a zone of its own.
struct ZoneSplit {
  DesignStatus status = DesignStatus::noPoints;  ///< whether the split was sought to the end
  bool across = false;  ///< strips lie beside each other across the long side
  double azimuth = 0;   ///< of the direction in which they follow each other, radians
  std::vector<SplitZone>
      zones;  ///< none where `status` is not `done`, or no number up to `most` does
};

/// The smallest number of parallel strips, along or across the longer axis of the points, whose zones
/// meet a limit: the largest |δ| of each, or the percentile where that is the criterion, is at most
/// `limit` in a rounded zone. Strips are as long as the limit lets them be and then made equally good; a
/// longer one never fits better, so that no fewer would do in that direction. They are sought with the
/// transverse Mercator and Lambert zones among the families asked for, if any; a zone is of
/// the first of them that meets the limit. The same answer every time; options and failures as of DesignZone.
GEOMATH_API ZoneSplit SplitZones(const HeightPoints& points, const DesignOptions& options,
                                 double limit, int most = 40);

}  // namespace zel_cs::geomath
