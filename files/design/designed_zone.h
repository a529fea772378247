#pragma once

#include <string>

#include "files/design/ground.h"
#include "geomath/design/zone_definition.h"

namespace geomath_files {

/// "transverse Mercator", "Lambert conic", "oblique Mercator", "stereographic".
const char* FamilyName(zel_cs::geomath::ZoneFamily family);

/// The definition in a sentence, with angles in degrees, minutes and seconds.
std::string ZoneInWords(const zel_cs::geomath::ZoneDefinition& zone);

/// Where the axis lies: "meridian 121 15 00 W", "parallel 44 40 00 N", …
std::string AxisInWords(const zel_cs::geomath::ZoneDefinition& zone);

/// The definition for other programs.
struct ZoneTexts {
  std::string system;  ///< a system file
  std::string wkt;     ///< WKT 2; empty where none describes the zone
  std::string proj;    ///< PROJ string
};
ZoneTexts WriteZone(const std::string& name, const zel_cs::geomath::ZoneDefinition& zone,
                    const Ground& ground);

}  // namespace geomath_files
