#pragma once

#include "geomath/design/axis_search.h"
#include "geomath/design/zone_design.h"

namespace zel_cs::geomath {

/// The best zone with rounded axis and scale: of all neighbouring multiples, each with its best scale
/// rounded up and down.
ZoneFit RoundZone(const GroundPoints& points, const ZoneDefinition& exact,
                  const DesignOptions& options, DesignWatch& watch);

/// Sets the false origin, as DesignZone has it.
void SetFalseOrigin(const GroundPoints& points, const DesignOptions& options, ZoneDefinition& zone);

}  // namespace zel_cs::geomath
