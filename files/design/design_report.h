#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/design/ground.h"
#include "geomath/design/linear_distortion.h"
#include "geomath/design/zone_split.h"

namespace geomath_files {

/// A grid that is in use where the zone is.
struct GridBeside {
  std::string name;
  std::shared_ptr<const zel_cs::geomath::TGeoProj> projection;
};

/// The UTM zone of the middle of the ground.
GridBeside UtmBeside(const Ground& ground);

/// What was designed, and what is said of it.
struct DesignedZone {
  std::string name;                                 ///< of the zone
  const Ground* ground;                             ///< what it is for
  zel_cs::geomath::ZoneDesign design;               ///< the families, the best first
  zel_cs::geomath::DesignCriterion criterion;       ///< what was made small
  std::optional<double> limit;                      ///< of the distortion
  std::optional<zel_cs::geomath::ZoneSplit> split;  ///< where one zone does not meet the limit
  std::vector<GridBeside> beside;                   ///< to compare with

  /// The zone itself.
  const zel_cs::geomath::ZoneDefinition& Zone() const { return design.families.front().rounded; }
  /// Whether a zone's distortions meet the limit: the largest, or the percentile of the criterion.
  bool Meets(const zel_cs::geomath::DistortionFigures& figures) const;
};

/// The distortions of a projection on the ground.
std::vector<double> DistortionsOf(const zel_cs::geomath::TGeoProj& projection,
                                  const Ground& ground);

/// What the user should know: a limit that is not met and how many zones would, an axis outside of the
/// ground, what the ground says.
std::vector<std::string> DesignWarnings(const DesignedZone& zone);

/// The zone, its figures and those of the grids beside it as text.
std::string DesignText(const DesignedZone& zone);

/// The same as one self-contained HTML page: the definition in words and for other programs, a map of
/// the distortion with the contour of the limit, its histogram, figures, the families compared, and the
/// zones of a split.
std::string DesignPage(const DesignedZone& zone);

}  // namespace geomath_files
