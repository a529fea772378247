#include "geomath/base/ellipsoid.h"

#include "files/system/json_section.h"
#include "files/system/system_sections.h"
#include "js/bindings/objects.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_js {

enum EllipsoidOperation { kToGeocentric, kToGeodetic };

void EllipsoidObject::Convert(int operation, const Block& block) const {
  auto& [first, second, third, d, e, f, g, h] = block.columns;
  if (operation == kToGeocentric) {
    TakeAngles(block, 0, AngleKind::latitude);
    TakeAngles(block, 1, AngleKind::longitude);
    ellipsoid.BLH_to_XYZ_Batch(first, second, third, block.count);
  } else {
    ellipsoid.XYZ_to_BLH_Batch(first, second, third, block.count);
    GiveAngles(block, 0);
    GiveAngles(block, 1);
  }
}

json EllipsoidObject::Describe() const {
  const Ellipsoid& e = ellipsoid;
  return Numbers({{"a", e.a},
                  {"b", e.b},
                  {"invF", e.invF},
                  {"f", e.f},
                  {"n", e.n},
                  {"e", e.e},
                  {"e2", e.e2},
                  {"ep2", e.ep2}});
}

std::shared_ptr<Object> MakeEllipsoid(const json& given) {
  return std::make_shared<EllipsoidObject>(
      ReadEllipsoid(JsonSection("Ellipsoid", "", given, kEllipsoidKeys, KeySpelling::camel)));
}

std::shared_ptr<EllipsoidObject> EllipsoidAt(const json& given) {
  if (auto part = PartAt<EllipsoidObject>(given, "ellipsoid")) return part;
  return std::make_shared<EllipsoidObject>(zel_cs::geomath::MakeEllipsoid(kWgs84A, kWgs84InvF));
}

}  // namespace geomath_js
