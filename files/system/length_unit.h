#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/system/json_section.h"

namespace geomath_files {

/// A unit of length.
struct LengthUnit {
  std::string name = "metre";  ///< as the EPSG registry has it
  double metres = 1;

  bool IsMetre() const { return metres == 1; }
  /// "m", "ft", "US ft"; the name of a unit that has no sign.
  std::string Sign() const;
};

/// In what a system's grid coordinates and the heights beside them are given and written. Everything
/// between, and every position, is in metres: values are turned where they enter and leave.
struct GridUnits {
  LengthUnit plane, height;

  bool AreMetres() const { return plane.IsMetre() && height.IsMetre(); }
};

/// The unit of a name of the registry or a usual abbreviation, in any letter case. Throws
/// UserError, which begins with `place`, for a name that is not known.
LengthUnit LengthUnitNamed(const std::string& name, const std::string& place);

/// The unit, or the two, of a command line: "ft", "us-ft,ft"; one alone holds for heights too.
GridUnits ParseGridUnits(const std::string& text);

/// The section "units" of a system file: "grid" and "height", each a name, or an object with the
/// "name" of a unit and its "metres". What is left out is in metres.
inline const std::vector<std::string> kUnitsKeys = {"grid", "height"};
GridUnits ReadUnits(const std::string& file, const JsonSection& section);
nlohmann::ordered_json UnitsSection(const GridUnits& units);

}  // namespace geomath_files
