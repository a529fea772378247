#pragma once

#include "geomath/design/ground_points.h"
#include "geomath/design/zone_design.h"

namespace zel_cs::geomath {

/// The points of a design, examined: longitudes are brought to within half a turn of each other, so that
/// they may exceed π.
struct DesignPoints {
  explicit DesignPoints(const Ellipsoid& ellipsoid) : ground(ellipsoid) {}

  DesignStatus status = DesignStatus::done;
  GroundPoints ground;
  std::vector<std::size_t> source;  ///< the index of each among those given
  bool acrossDateLine = false;
};

DesignPoints ExaminePoints(const HeightPoints& points, const DesignOptions& options);

/// The families asked for that serve the points; `status` says so when none does.
std::vector<ZoneFamily> FamiliesFor(DesignPoints& points, const DesignOptions& options);

}  // namespace zel_cs::geomath
