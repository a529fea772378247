#include "files/system/length_unit.h"

#include <fmt/format.h>

#include <algorithm>

#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

// The units of lengths that projected systems of the EPSG registry have, and those of heights. The
// registry states a factor as a fraction or in 15 figures.
struct UnitRow {
  const char* name;
  double metres;
  const char* sign;                 // null for none
  std::vector<const char*> others;  // folded
};
const UnitRow kUnits[] = {
    {"metre", 1, "m", {"m", "meter", "metres", "meters"}},
    {"foot", 0.3048, "ft", {"ft", "feet", "internationalfoot", "ift"}},
    {"US survey foot", 1200.0 / 3937, "US ft", {"usft", "ftus", "ussurveyfeet", "usfoot"}},
    {"kilometre", 1000, "km", {"km", "kilometer"}},
    {"Clarke's foot", 0.3047972654, nullptr, {}},
    {"Clarke's link", 0.201166195164, nullptr, {}},
    {"Clarke's yard", 0.9143917962, nullptr, {}},
    {"British foot (Sears 1922)", 0.9143984146160287 / 3, nullptr, {}},
    {"British chain (Sears 1922)", 20.116765121552632, nullptr, {}},
    {"British chain (Benoit 1895 B)", 20.116782494375872, nullptr, {}},
    {"British chain (Sears 1922 truncated)", 20.116756, nullptr, {}},
    {"British foot (1865)", 0.30480083333333335, nullptr, {}},
    {"British foot (1936)", 0.3048007491, nullptr, {}},
    {"British yard (Sears 1922)", 0.9143984146160287, nullptr, {}},
    {"Indian foot", 12.0 / 39.370142, nullptr, {}},
    {"Indian yard", 36.0 / 39.370142, nullptr, {}},
    {"Indian yard (1937)", 0.91439523, nullptr, {}},
    {"Gold Coast foot", 6378300.0 / 20926201, nullptr, {}},
    {"German legal metre", 1.0000135965, nullptr, {}},
    {"link", 0.201168, nullptr, {}},
};

std::vector<std::string> UnitNames() {
  std::vector<std::string> names;
  for (const UnitRow& row : kUnits) names.emplace_back(row.name);
  return names;
}

const UnitRow* FindUnit(const std::string& name) {
  const std::string folded = FoldName(name);
  for (const UnitRow& row : kUnits) {
    const bool other = std::any_of(row.others.begin(), row.others.end(),
                                   [&](const char* each) { return folded == each; });
    if (other || SameName(name, row.name)) return &row;
  }
  return nullptr;
}

}  // namespace

std::string LengthUnit::Sign() const {
  const UnitRow* row = FindUnit(name);
  return row && row->sign ? row->sign : name;
}

std::optional<LengthUnit> FindLengthUnit(const std::string& name) {
  const UnitRow* row = FindUnit(name);
  if (!row) return std::nullopt;
  return LengthUnit{row->name, row->metres};
}

LengthUnit LengthUnitNamed(const std::string& name, const std::string& place) {
  if (const auto unit = FindLengthUnit(name)) return *unit;
  throw UserError(fmt::format("{}: \"{}\" is no unit of length that is known here; {}", place,
                              Printable(name), SuggestName(name, UnitNames())));
}

GridUnits ParseGridUnits(const std::string& text) {
  const std::vector<std::string> names = SplitNames(text);
  if (names.empty() || names.size() > 2)
    throw UserError("--unit: one unit, or that of the plane and that of the heights: us-ft,ft");
  return {LengthUnitNamed(names.front(), "--unit"), LengthUnitNamed(names.back(), "--unit")};
}

}  // namespace geomath_files
