#include <algorithm>
#include <cmath>

#include "files/system/system_sections.h"
#include "geomath/base/angle.h"
#include "js/bindings/objects.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_js {
namespace {

enum SiteOperation { kToSite, kSiteToGrid };
enum GroundOperation { kToGround, kGroundToGrid };

// What changes nothing, for the parameters of a part of which only some are given.
void Complete(json& section, int first, int count) {
  const std::string* keys = kLocalizationKeys + first;
  if (std::none_of(keys, keys + count, [&](const auto& key) { return section.contains(key); }))
    return;
  for (const std::string* key = keys; key != keys + count; ++key)
    if (!section.contains(*key)) section[*key] = *key == "scale" ? 1.0 : 0.0;
}

}  // namespace

// A part that was not calibrated passes unchanged.
void SiteObject::Convert(int operation, const Block& block) const {
  double given[3][kBlock];
  auto& c = block.columns;
  for (int i = 0; i < 3; ++i) std::copy_n(c[i], block.count, given[i]);
  if (operation == kToSite)
    site.ToLocalBatch(c[0], c[1], c[2], block.count, LocalToGrid::kBoth, 1);
  else
    site.ToGridBatch(c[0], c[1], c[2], block.count, LocalToGrid::kBoth, 1);
  for (std::size_t i = 0; i < block.count; ++i) {
    if (!std::isfinite(c[0][i])) continue;
    if (site.mode == LocalToGrid::kHorizontal) c[2][i] = given[2][i];
    if (site.mode == LocalToGrid::kVertical) {
      c[0][i] = given[0][i];
      c[1][i] = given[1][i];
    }
  }
}

json SiteObject::Describe() const {
  json described = json::object();
  const std::string* const keys = kLocalizationKeys;
  for (int i = 0; i < kPlaneKeys && site.mode & LocalToGrid::kHorizontal; ++i)
    described[keys[i]] = site.GetPlaneParam(i, 0) * (keys[i] == "rotation" ? kDegPerRad : 1);
  for (int i = 0; i < kHeightKeys && site.mode & LocalToGrid::kVertical; ++i)
    described[keys[kPlaneKeys + i]] = site.GetHeightParam(i, 0);
  return described;
}

std::shared_ptr<Object> MakeLocalToGrid(const json& given) {
  json section = given;
  if (section.contains("rotation") && section["rotation"].is_number())
    section["rotation"] = section["rotation"].get<double>() * kRadPerDeg;
  Complete(section, 0, kPlaneKeys);
  Complete(section, kPlaneKeys, kHeightKeys);
  const std::vector<std::string_view> keys(std::begin(kLocalizationKeys),
                                           std::end(kLocalizationKeys));
  return std::make_shared<SiteObject>(
      ReadLocalization(JsonSection("LocalToGrid", "", section, keys, KeySpelling::camel)));
}

void GroundObject::Convert(int operation, const Block& block) const {
  auto& [north, east, c, d, e, f, g, h] = block.columns;
  if (operation == kToGround)
    ground.ToGroundBatch(north, east, block.count);
  else
    ground.ToGridBatch(north, east, block.count);
}

json GroundObject::Describe() const {
  json described = Numbers({{"scale", ground.scale},
                            {"height", ground.height},
                            {"gridScaleFactor", ground.gridScaleFactor},
                            {"rotation", ground.rotation * kDegPerRad},
                            {"originN", ground.originN},
                            {"originE", ground.originE},
                            {"offsetN", ground.offsetN},
                            {"offsetE", ground.offsetE}});
  described["enabled"] = !ground.IsDisabled();
  return described;
}

std::shared_ptr<Object> MakeGridToGround(const json& given) {
  json section = given;
  if (section.contains("enabled") && section["enabled"].is_boolean())
    section["enabled"] = section["enabled"].get<bool>() ? "yes" : "no";
  return std::make_shared<GroundObject>(
      ReadGround(JsonSection("GridToGround", "", section, kGroundKeys, KeySpelling::camel)));
}

}  // namespace geomath_js
