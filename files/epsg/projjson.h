#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "files/system/length_unit.h"
#include "geomath/base/ellipsoid.h"

namespace geomath_files {

/// A value of a PROJJSON document, {"value": …, "unit": …} or a plain number, in a unit. A number
/// without unit counts in degrees, metres or 1.
double Degrees(const nlohmann::json& quantity);
double ArcSeconds(const nlohmann::json& quantity);
double Metres(const nlohmann::json& quantity);
double Factor(const nlohmann::json& quantity);

/// A unit of length; the metre when the document has none.
LengthUnit LengthUnitOf(const nlohmann::json& unit);

/// The ellipsoid of a geographic system, and its prime meridian, degrees east of Greenwich.
zel_cs::geomath::Ellipsoid EllipsoidOf(const nlohmann::json& geographic);
double PrimeMeridianOf(const nlohmann::json& geographic);

/// An ellipsoid as a section of a system file, by its axes, of which no digit is lost.
nlohmann::ordered_json EllipsoidFigures(const zel_cs::geomath::Ellipsoid& ellipsoid);

/// What an object has under a key, without a copy; null where it has nothing.
const nlohmann::json& MemberOf(const nlohmann::json& object, const char* key);

/// The code in "id", or 0 when there is none of that authority.
int CodeIn(const nlohmann::json& object, const char* authority = "EPSG");

/// The parameter of that EPSG code in an array of parameters; null when it is not there.
const nlohmann::json* FindParameter(const nlohmann::json& parameters, int code);

}  // namespace geomath_files
