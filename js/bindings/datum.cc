#include "geomath/datum/datum.h"

#include "files/system/system_sections.h"
#include "js/bindings/objects.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_js {

enum DatumOperation { kToWgs84, kFromWgs84 };

// The datum points to its ellipsoid: that of the object.
DatumObject::DatumObject(std::shared_ptr<EllipsoidObject> on, const Datum& of)
    : ellipsoid(std::move(on)),
      datum(&ellipsoid->ellipsoid, of.Shift(), of.Rotation(), of.Scale(), userTypeUser, false,
            nullptr) {}

void DatumObject::Convert(int operation, const Block& block) const {
  auto& [x, y, z, d, e, f, g, h] = block.columns;
  if (operation == kToWgs84)
    datum.ToWGS84DatumBatch(x, y, z, block.count);
  else
    datum.ToLocalDatumBatch(x, y, z, block.count);
}

json DatumObject::Describe() const {
  constexpr double kPerMillion = 1e6;
  const auto listOf = [](const TAbstractPoint3<double>& p) { return json{p[0], p[1], p[2]}; };
  json described = Numbers({{"ppm", datum.Scale() * kPerMillion}});
  described["shift"] = listOf(datum.Shift());
  described["rotation"] = listOf(datum.Rotation());
  return described;
}

std::shared_ptr<Object> MakeDatum(const json& given) {
  const auto on = EllipsoidAt(given);
  const json parameters = Without(given, {"ellipsoid"});
  return std::make_shared<DatumObject>(
      on, ReadDatum(JsonSection("Datum", "", parameters, kDatumKeys, KeySpelling::camel),
                    &on->ellipsoid));
}

}  // namespace geomath_js
