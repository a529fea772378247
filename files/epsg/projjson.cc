#include "files/epsg/projjson.h"

#include <string_view>

#include "geomath/base/angle.h"

using nlohmann::json;
using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// Units whose factor, of 15 figures in the registry, is the rounding of a fraction.
struct ExactUnit {
  std::string_view name;
  double factor;  // radians or metres
};
constexpr ExactUnit kExactUnits[] = {
    {"grad", kPi / 200},
    {"arc-second", kRadPerDeg / 3600},
    {"US survey foot", 1200.0 / 3937},
};

// Radians, metres or 1 that a unit holds. The three units without a table of their own, "degree",
// "metre" and "unity", are `plain` of them.
double UnitFactor(const json& unit, double plain) {
  if (!unit.is_object()) return plain;
  const json& name = MemberOf(unit, "name");
  for (const ExactUnit& row : kExactUnits) {
    if (name == row.name) return row.factor;
  }
  return unit.value("conversion_factor", plain);
}

double InUnit(const json& quantity, double plain, double wanted) {
  if (quantity.is_number()) return quantity.get<double>() * (plain / wanted);
  return quantity.at("value").get<double>() *
         (UnitFactor(MemberOf(quantity, "unit"), plain) / wanted);
}

const json& FrameOf(const json& geographic) {
  return geographic.at(geographic.contains("datum") ? "datum" : "datum_ensemble");
}

}  // namespace

double Degrees(const json& quantity) { return InUnit(quantity, kRadPerDeg, kRadPerDeg); }

double ArcSeconds(const json& quantity) { return InUnit(quantity, kRadPerDeg, kRadPerDeg / 3600); }

double Metres(const json& quantity) { return InUnit(quantity, 1, 1); }

double Factor(const json& quantity) { return InUnit(quantity, 1, 1); }

LengthUnit LengthUnitOf(const json& unit) {
  if (!unit.is_object()) return {"metre", 1};
  return {unit.value("name", "unit"), UnitFactor(unit, 1)};
}

Ellipsoid EllipsoidOf(const json& geographic) {
  const json& figure = FrameOf(geographic).at("ellipsoid");
  Ellipsoid ellipsoid;
  if (figure.contains("radius")) {
    ellipsoid.a = ellipsoid.b = Metres(figure.at("radius"));
  } else {
    ellipsoid.a = Metres(figure.at("semi_major_axis"));
    if (figure.contains("inverse_flattening"))
      return MakeEllipsoid(ellipsoid.a, Factor(figure.at("inverse_flattening")));
    ellipsoid.b = Metres(figure.at("semi_minor_axis"));
  }
  ellipsoid.SetEllipsoid(true);
  return ellipsoid;
}

double PrimeMeridianOf(const json& geographic) {
  const json& frame = FrameOf(geographic);
  return frame.contains("prime_meridian") ? Degrees(frame.at("prime_meridian").at("longitude")) : 0;
}

nlohmann::ordered_json EllipsoidFigures(const Ellipsoid& ellipsoid) {
  return {{"a", ellipsoid.a}, {"b", ellipsoid.b}};
}

const json& MemberOf(const json& object, const char* key) {
  static const json nothing;
  const auto found = object.find(key);
  return found == object.end() ? nothing : *found;
}

int CodeIn(const json& object, const char* authority) {
  const json &id = MemberOf(object, "id"), &code = MemberOf(id, "code");
  return code.is_number_integer() && MemberOf(id, "authority") == authority ? code.get<int>() : 0;
}

ParameterList::ParameterList(const json& parameters) {
  for (const json& parameter : parameters) rows_.emplace_back(CodeIn(parameter), &parameter);
}

const json* ParameterList::Find(int code) const {
  for (const auto& [own, parameter] : rows_)
    if (own == code) return parameter;
  return nullptr;
}

double ParameterList::In(int code, double (*unit)(const json&)) const {
  const json* parameter = Find(code);
  return parameter ? unit(*parameter) : 0;
}

}  // namespace geomath_files
