#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace geomath_files {

/// The text with the letters A to Z in lower case.
std::string LowerCase(std::string_view text);

/// The text in lower case without spaces, underscores and hyphens: "Central Meridian",
/// "central_meridian" and "CentralMeridian" are one name.
std::string FoldName(std::string_view name);

/// Whether FoldName gives the same for both.
bool SameName(std::string_view a, std::string_view b);

/// The name as programs spell it, which folds to the same: "Central Meridian" and "CentralMeridian"
/// become "central_meridian", "FEast" "f_east", "dX" "dx".
std::string SnakeName(std::string_view name);

/// The same as JavaScript spells it: "Central Meridian" becomes "centralMeridian", "dX" "dx".
std::string CamelName(std::string_view name);

/// The candidate that `name` was probably meant to be, or an empty text when none is near.
std::string NearestName(std::string_view name, std::span<const std::string> candidates);

/// A sentence for an unknown name: `did you mean "Scale"? Known: "Lat0", "Scale"`.
std::string SuggestName(std::string_view name, std::span<const std::string> candidates);

/// The names in quotation marks, separated by commas.
std::string ListNames(std::span<const std::string> names);

/// The names of a list, separated by commas, without the blanks around them; one that holds a comma
/// stands in quotation marks, as a field of CSV does. None for an empty list.
std::vector<std::string> SplitNames(std::string_view list);

/// A text from a file made fit for a message: control characters replaced, cut at 60 bytes.
std::string Printable(std::string_view text);

}  // namespace geomath_files
