#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/system/json_section.h"
#include "files/system/length_unit.h"

namespace geomath_files {

/// The section "units" of a system file: "grid" and "height", each a name, or an object with the
/// "name" of a unit and its "metres". What is left out is in metres.
inline constexpr std::string_view kUnitsKeys[] = {"grid", "height"};
GridUnits ReadUnits(const std::string& file, const JsonSection& section);
nlohmann::ordered_json UnitsSection(const GridUnits& units);

}  // namespace geomath_files
