#include "files/system/units_section.h"

#include <fmt/format.h>

#include <cmath>

using nlohmann::ordered_json;

namespace geomath_files {
namespace {

LengthUnit ReadUnit(const std::string& file, const JsonSection& units, const std::string& key) {
  if (!units.Has(key)) return {};
  constexpr const char* kWhat = "the name of a unit, or an object with \"name\" and \"metres\",";
  if (!units.Object(key).is_object())
    return LengthUnitNamed(units.Text(key, kWhat), fmt::format("{}: \"units.{}\"", file, key));
  const JsonSection own(file, units.PathOf(key), units.Object(key), {"name", "metres"});
  LengthUnit unit{own.Text("name", "a name"), own.Number("metres", "metres of one unit")};
  if (!(unit.metres > 0)) own.Fail("metres", "must be more than 0");
  return unit;
}

ordered_json UnitValue(const LengthUnit& unit) {
  constexpr double kRounding = 1e-13;  // of a factor, in the registry's 15 figures
  const auto known = FindLengthUnit(unit.name);
  if (known && std::abs(known->metres / unit.metres - 1) < kRounding) return known->name;
  return {{"name", unit.name}, {"metres", unit.metres}};
}

}  // namespace

GridUnits ReadUnits(const std::string& file, const JsonSection& section) {
  return {ReadUnit(file, section, "grid"), ReadUnit(file, section, "height")};
}

ordered_json UnitsSection(const GridUnits& units) {
  ordered_json section = ordered_json::object();
  if (!units.plane.IsMetre()) section["grid"] = UnitValue(units.plane);
  if (!units.height.IsMetre()) section["height"] = UnitValue(units.height);
  return section;
}

}  // namespace geomath_files
