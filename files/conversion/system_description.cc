#include "files/conversion/system_description.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "files/conversion/conversion.h"
#include "files/epsg/epsg_code.h"
#include "files/epsg/epsg_registry.h"
#include "files/epsg/epsg_system.h"
#include "files/epsg/grid_folders.h"
#include "files/epsg/operation_chooser.h"
#include "files/epsg/projjson.h"
#include "files/exchange/grid_wkt.h"
#include "files/system/projection_names.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_files {
namespace {

std::string Line(const char* what, const std::string& text) {
  return fmt::format("  {:<12} {}\n", what, text);
}

std::string TitleOf(const json& part) {
  const int code = CodeIn(part);
  const std::string name = part.value("name", "?");
  return code ? fmt::format("EPSG:{} {}", code, name) : name;
}

std::string UnitName(const json& quantity) {
  const json unit = quantity.value("unit", json());
  if (unit.is_object()) return unit.value("name", "unit");
  return unit.is_string() && unit != "unity" ? unit.get<std::string>() : "";
}

std::string EllipsoidWords(const Ellipsoid& e) {
  return fmt::format("a {} m, 1/f {}", e.a, e.invF);
}

std::string AreaWords(const GeoBox& area) {
  return fmt::format("latitudes {} to {}, longitudes {} to {}", area.south, area.north, area.west,
                     area.east);
}

std::string DatumLines(const json& geographic) {
  const json& frame = geographic.at(geographic.contains("datum") ? "datum" : "datum_ensemble");
  std::string text = Line("datum", frame.value("name", "?"));
  text += Line("ellipsoid", frame.at("ellipsoid").value("name", "") + ": " +
                                EllipsoidWords(EllipsoidOf(geographic)));
  if (const double meridian = PrimeMeridianOf(geographic); meridian != 0)
    text += Line("meridian", fmt::format("{} degrees from Greenwich", meridian));
  return text;
}

std::string AxisLine(const json& document) {
  std::string axes;
  for (const json& axis : document.at("coordinate_system").at("axis"))
    axes += fmt::format("{}{} to the {} ({})", axes.empty() ? "" : ", ", axis.value("name", "?"),
                        axis.value("direction", "?"), UnitName(axis));
  return Line("axes", axes);
}

std::string ProjectionLines(const json& conversion) {
  const json& method = conversion.at("method");
  std::string text = Line("projection", TitleOf(conversion));
  text +=
      Line("method", fmt::format("{} (EPSG method {})", method.value("name", "?"), CodeIn(method)));
  for (const json& parameter : conversion.value("parameters", json::array())) {
    const std::string unit = UnitName(parameter);
    text +=
        Line("", fmt::format("{}: {}{}{}", parameter.value("name", "?"),
                             parameter.at("value").get<double>(), unit.empty() ? "" : " ", unit));
  }
  return text;
}

std::string DocumentLines(const json& document) {
  const std::string type = document.value("type", "");
  std::string text;
  if (type == "CompoundCRS") {
    for (const json& part : document.at("components"))
      text += Line("part", TitleOf(part)) + DocumentLines(part);
    return text;
  }
  if (type == "BoundCRS") return DocumentLines(document.at("source_crs"));
  if (document.contains("area")) text += Line("area", document.value("area", ""));
  if (type == "ProjectedCRS") text += DatumLines(document.at("base_crs"));
  if (type == "GeographicCRS" || type == "GeodeticCRS") text += DatumLines(document);
  if (type == "VerticalCRS" && document.contains("datum"))
    text += Line("datum", document.at("datum").value("name", "?"));
  if (document.contains("conversion")) text += ProjectionLines(document.at("conversion"));
  return text + AxisLine(document);
}

std::string SystemFileLines(const CoordinateSystem& system) {
  std::string text = Line("ellipsoid", EllipsoidWords(system.LocalEllipsoid()));
  const NamedProjection& named = system.Named();
  if (named.kind) text += Line("projection", named.kind->name);
  for (std::size_t i = 0; i < named.values.size(); ++i)
    text += Line("", fmt::format("{}: {}", named.kind->parameters[i].name, named.values[i]));
  if (!system.GeographicCrs().empty()) text += Line("positions", system.GeographicCrs());
  text += Line("units", fmt::format("{}, heights in {}", system.Units().plane.name,
                                    system.Units().height.name));
  for (const std::string& file : system.Files())
    if (!file.empty()) text += Line("file", file);
  return text;
}

// The best of the registry, and how good it is.
std::string Wgs84Line(const EpsgRegistry& registry, const ConversionEnd& end) {
  constexpr const char* kWgs84 = "4326";
  if (end.Geographic() == kWgs84) return "";
  const GridFolders folders({}, "", EpsgRegistry::ProjFolders());
  const auto candidates =
      OperationChooser(registry, folders).Between(end.Geographic(), kWgs84, {end.Area()});
  const CandidateOperation* best = BestUsable(candidates);
  return Line("to WGS 84", best ? fmt::format("{}, {}, one of {}", best->Title(), best->Accuracy(),
                                              candidates.size())
                                : "no operation of the registry");
}

// In the middle of its area, on its own datum.
std::string PointLine(const std::string& text, const ConversionEnd& end) {
  const GeoBox& area = end.Area();
  const double turn = area.west > area.east ? 360 : 0;
  const double latitude = std::round((area.south + area.north) / 2);
  const double longitude = std::remainder(std::round((area.west + area.east + turn) / 2), 360);
  const Conversion conversion("EPSG:" + end.Geographic(), text);
  double a = latitude * kRadPerDeg, b = longitude * kRadPerDeg, c = 0;
  if (conversion.ToTarget(&a, &b, &c, 1) == 0) return "";
  if (end.Kind() == EndKind::geographic) return "";
  const std::string place = fmt::format("{} {} of EPSG:{}", latitude, longitude, end.Geographic());
  const std::string coordinates = end.Kind() == EndKind::projected
                                      ? fmt::format("{:.4f} {:.4f}", a, b)
                                      : fmt::format("{:.4f} {:.4f} {:.4f}", a, b, c);
  return Line("a point", fmt::format("{} is {}", place, coordinates));
}

const char* KindWords(const ConversionEnd& end) {
  switch (end.Kind()) {
    case EndKind::geographic:
      return "geographic";
    case EndKind::projected:
      return "projected";
    case EndKind::geocentric:
      break;
  }
  return "geocentric";
}

}  // namespace

std::string DescribeSystem(const std::string& text) {
  const EpsgRegistry registry;
  const ConversionEnd end(registry, text);
  std::string words = end.Title() + "\n" + Line("kind", KindWords(end));
  words += Line("bounds", AreaWords(end.Area()));
  const std::string definition = end.Definition();
  words += definition.empty() ? SystemFileLines(*end.System())
                              : DocumentLines(registry.CrsOfText(definition, end.Title()).document);
  words += Wgs84Line(registry, end) + PointLine(text, end);
  for (const std::string& note : end.Notes()) words += Line("note", note);
  return words;
}

std::string WriteSystem(const std::string& text, SystemNotation notation) {
  const EpsgRegistry registry;
  const ConversionEnd end(registry, text);
  std::string definition = end.Definition();
  if (notation == SystemNotation::system) {
    const std::string code = WithoutAuthority(definition);
    if (!IsEpsgCode(code))
      throw UserError(end.Title() + ": only a system of one code becomes a system file");
    return MakeEpsgSystem(code, {}).document.dump(2) + "\n";
  }
  if (definition.empty()) definition = GridWkt(*end.System());
  if (definition.empty()) throw UserError(end.Title() + ": has no counterpart in WKT");
  return registry.Write(definition, notation) + "\n";
}

}  // namespace geomath_files
