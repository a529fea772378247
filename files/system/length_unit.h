#pragma once

#include <optional>
#include <string>

namespace geomath_files {

/// A unit of length.
struct LengthUnit {
  std::string name = "metre";  ///< as the EPSG registry has it
  double metres = 1;           ///< of one unit

  /// True for the metre itself, and for a unit as long.
  bool IsMetre() const { return metres == 1; }
  /// "m", "ft", "US ft"; the name of a unit that has no sign.
  std::string Sign() const;
};

/// In what a system's grid coordinates and the heights beside them are given and written. Everything
/// between, and every position, is in metres: values are turned where they enter and leave.
struct GridUnits {
  LengthUnit plane;   ///< of northing and easting
  LengthUnit height;  ///< of heights beside them

  /// True where nothing has to be turned.
  bool AreMetres() const { return plane.IsMetre() && height.IsMetre(); }
};

/// The unit of a name of the registry or a usual abbreviation, in any letter case; null for a name
/// that is not known.
std::optional<LengthUnit> FindLengthUnit(const std::string& name);

/// The same unit. Throws UserError, which begins with `place`, for a name that is not known.
LengthUnit LengthUnitNamed(const std::string& name, const std::string& place);

/// The unit, or the two, of a command line: "ft", "us-ft,ft"; one alone holds for heights too.
/// Throws UserError.
GridUnits ParseGridUnits(const std::string& text);

}  // namespace geomath_files
