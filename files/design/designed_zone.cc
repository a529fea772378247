#include "files/design/designed_zone.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "files/exchange/grid_wkt.h"
#include "files/exchange/proj_projection.h"
#include "files/system/system_file.h"
#include "files/words/number_text.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// Degrees without the rounding of the radians that they come from.
double Degrees(double radians) {
  constexpr double kUnits = 3600e6;  // a millionth of a second
  return std::round(radians * kDegPerRad * kUnits) / kUnits;
}

std::string Angle(double radians, AngleKind kind) {
  return SexagesimalText(Degrees(radians), kind, 0);
}

nlohmann::ordered_json ZoneSection(const ZoneDefinition& zone) {
  const double lat0 = Degrees(zone.lat0), lon0 = Degrees(zone.lon0);
  nlohmann::ordered_json section;
  switch (zone.family) {
    case ZoneFamily::transverseMercator:
      section = {{"name", "TMERC"}, {"Central Meridian", lon0}, {"Lat0", lat0}};
      break;
    case ZoneFamily::lambert:
      section = {
          {"name", "LC"}, {"SouthLat", lat0}, {"NorthLat", lat0}, {"Lon0", lon0}, {"Lat0", lat0}};
      break;
    case ZoneFamily::obliqueMercator:
      section = {{"name", "OM83"},
                 {"AxisAzimuth", Degrees(zone.azimuth)},
                 {"Lon0", lon0},
                 {"Lat0", lat0},
                 {"Zone number", 0}};
      break;
    case ZoneFamily::stereographic:
      section = {{"name", "DSTER"}, {"Lat0", lat0}, {"Lon0", lon0}};
      break;
  }
  section["Scale"] = zone.scale;
  section["East0"] = zone.fEast;
  section["North0"] = zone.fNorth;
  return section;
}

// The extent of the ground in whole hundredths of a degree.
nlohmann::ordered_json AreaSection(const Ground& ground) {
  const auto [south, north] = std::minmax_element(ground.b.begin(), ground.b.end());
  const auto [west, east] = std::minmax_element(ground.l.begin(), ground.l.end());
  const auto out = [](double radians, double (*round)(double)) {
    return round(radians * kDegPerRad * 100) / 100;
  };
  const auto longitude = [](double degrees) { return std::remainder(degrees, 360); };
  double (*const down)(double) = std::floor;
  double (*const up)(double) = std::ceil;
  return {{"west", longitude(out(*west, down))},
          {"south", out(*south, down)},
          {"east", longitude(out(*east, up))},
          {"north", out(*north, up)}};
}

}  // namespace

const char* FamilyName(ZoneFamily family) {
  constexpr const char* kNames[] = {"transverse Mercator", "Lambert conic", "oblique Mercator",
                                    "stereographic"};
  return kNames[static_cast<int>(family)];
}

std::string AxisInWords(const ZoneDefinition& zone) {
  const std::string lat = Angle(zone.lat0, AngleKind::latitude);
  const std::string lon = Angle(zone.lon0, AngleKind::longitude);
  switch (zone.family) {
    case ZoneFamily::transverseMercator:
      return "meridian " + lon;
    case ZoneFamily::lambert:
      return "parallel " + lat;
    case ZoneFamily::obliqueMercator:
      return fmt::format("line through {}, {} at azimuth {}", lat, lon,
                         Angle(zone.azimuth, AngleKind::turn));
    case ZoneFamily::stereographic:
      break;
  }
  return "point " + lat + ", " + lon;
}

std::string ZoneInWords(const ZoneDefinition& zone) {
  std::string words = fmt::format("{}: {}, scale {:.9g} there", FamilyName(zone.family),
                                  AxisInWords(zone), zone.scale);
  if (zone.family == ZoneFamily::transverseMercator)
    words += ", latitude of origin " + Angle(zone.lat0, AngleKind::latitude);
  if (zone.family == ZoneFamily::lambert)
    words += ", longitude of origin " + Angle(zone.lon0, AngleKind::longitude);
  words +=
      fmt::format(", false easting {:.0f} m, false northing {:.0f} m", zone.fEast, zone.fNorth);
  if (zone.family == ZoneFamily::obliqueMercator)
    words += " at the natural origin (Hotine, variant A)";
  return words;
}

ZoneTexts WriteZone(const std::string& name, const ZoneDefinition& zone, const Ground& ground) {
  nlohmann::ordered_json document = {
      {"name", name},
      {"description", ZoneInWords(zone)},
      {"area", AreaSection(ground)},
      {"local", {{"a", ground.ellipsoid.a}, {"invF", ground.ellipsoid.invF}}},
      {"projection", ZoneSection(zone)},
  };
  if (!ground.crs.empty()) document["crs"] = {{"geographic", ground.crs}};
  ZoneTexts texts;
  texts.system = document.dump(2) + "\n";
  const auto system = ParseSystem(texts.system, name);
  texts.wkt = GridWkt(*system);
  if (const auto proj = ProjProjection(*system->Projection(), system->ProjectionName()))
    texts.proj = *proj + " +units=m +no_defs +type=crs";
  return texts;
}

}  // namespace geomath_files
