#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

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

/// The parameters of a conversion or of a transformation by their EPSG codes; it points into the array.
class ParameterList {
 public:
  explicit ParameterList(const nlohmann::json& parameters);
  /// Null for one that is not there.
  const nlohmann::json* Find(int code) const;
  /// In the unit of one of the functions above; 0 for one that is not there.
  double In(int code, double (*unit)(const nlohmann::json&)) const;

 private:
  std::vector<std::pair<int, const nlohmann::json*>> rows_;
};

}  // namespace geomath_files
