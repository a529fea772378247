#include "files/epsg/registry_tables.h"

#include <fmt/format.h>

#include <cmath>

#include "files/epsg/epsg_code.h"
#include "files/epsg/operation_tables.h"

using nlohmann::json;

namespace geomath_files {
namespace {

constexpr const char* kLayout =
    "SELECT value FROM metadata WHERE key = 'DATABASE.LAYOUT.VERSION.MAJOR'";
constexpr const char* kUnit =
    "SELECT name, conv_factor FROM unit_of_measure WHERE auth_name = 'EPSG' AND code = ?1";
constexpr const char* kAxes =
    "SELECT s.type, a.orientation, a.uom_code FROM coordinate_system s JOIN axis a ON "
    "a.coordinate_system_auth_name = s.auth_name AND a.coordinate_system_code = s.code "
    "WHERE s.auth_name = 'EPSG' AND s.code = ?1 ORDER BY a.coordinate_system_order";
constexpr const char* kGeodetic =
    "SELECT g.name, g.type, g.coordinate_system_code, d.name, d.ensemble_accuracy, "
    "d.frame_reference_epoch, e.semi_major_axis, e.inv_flattening, e.semi_minor_axis, e.uom_code, "
    "p.longitude, p.uom_code, g.deprecated FROM geodetic_crs g "
    "JOIN geodetic_datum d ON d.auth_name = g.datum_auth_name AND d.code = g.datum_code "
    "JOIN ellipsoid e ON e.auth_name = d.ellipsoid_auth_name AND e.code = d.ellipsoid_code "
    "JOIN prime_meridian p ON p.auth_name = d.prime_meridian_auth_name "
    "AND p.code = d.prime_meridian_code "
    "WHERE g.auth_name = 'EPSG' AND g.code = ?1 AND g.coordinate_system_auth_name = 'EPSG' "
    "AND e.uom_auth_name = 'EPSG' AND p.uom_auth_name = 'EPSG'";
constexpr const char* kGeographicOn =
    "SELECT o.code FROM geodetic_crs g JOIN geodetic_crs o ON o.datum_auth_name = "
    "g.datum_auth_name "
    "AND o.datum_code = g.datum_code WHERE g.auth_name = 'EPSG' AND g.code = ?1 "
    "AND g.datum_auth_name = 'EPSG' AND o.auth_name = 'EPSG' AND o.type = 'geographic 2D' "
    "AND o.deprecated = 0 ORDER BY o.code LIMIT 1";
constexpr const char* kProjected =
    "SELECT p.name, p.coordinate_system_code, p.geodetic_crs_code, m.code, m.name, "
    "c.param1_code, c.param1_value, c.param1_uom_code, c.param2_code, c.param2_value, "
    "c.param2_uom_code, c.param3_code, c.param3_value, c.param3_uom_code, c.param4_code, "
    "c.param4_value, c.param4_uom_code, c.param5_code, c.param5_value, c.param5_uom_code, "
    "c.param6_code, c.param6_value, c.param6_uom_code, c.param7_code, c.param7_value, "
    "c.param7_uom_code FROM projected_crs p "
    "JOIN conversion_table c ON c.auth_name = p.conversion_auth_name AND c.code = "
    "p.conversion_code "
    "JOIN conversion_method m ON m.auth_name = c.method_auth_name AND m.code = c.method_code "
    "WHERE p.auth_name = 'EPSG' AND p.code = ?1 AND p.deprecated = 0 AND m.auth_name = 'EPSG' "
    "AND p.geodetic_crs_auth_name = 'EPSG' AND p.coordinate_system_auth_name = 'EPSG'";
constexpr int kConversionParameters = 7, kFirstParameterColumn = 5;
constexpr const char* kVertical =
    "SELECT name, coordinate_system_code FROM vertical_crs WHERE auth_name = 'EPSG' AND code = ?1 "
    "AND deprecated = 0 AND coordinate_system_auth_name = 'EPSG'";
constexpr const char* kCompound =
    "SELECT name, horiz_crs_code, vertical_crs_code FROM compound_crs WHERE auth_name = 'EPSG' "
    "AND code = ?1 AND deprecated = 0 AND horiz_crs_auth_name = 'EPSG' "
    "AND vertical_crs_auth_name = 'EPSG'";
constexpr const char* kArea =
    "SELECT x.west_lon, x.south_lat, x.east_lon, x.north_lat FROM usage u JOIN extent x ON "
    "x.auth_name = u.extent_auth_name AND x.code = u.extent_code WHERE u.object_table_name = ?1 "
    "AND u.object_auth_name = 'EPSG' AND u.object_code = ?2";
// PROJ takes no grids of velocities for others.
constexpr const char* kGrid =
    "SELECT g.grid_name, a.proj_grid_name, a.inverse_direction FROM grid_transformation g "
    "LEFT JOIN grid_alternatives a ON a.original_grid_name = g.grid_name "
    "AND a.proj_grid_name <> '' AND a.proj_method <> 'velocity_grid' "
    "WHERE g.auth_name = 'EPSG' AND g.code = ?1";

constexpr const char* kFile =
    "SELECT proj_grid_name, old_proj_grid_name, url FROM grid_alternatives "
    "WHERE proj_grid_name = ?1 OR old_proj_grid_name = ?1 LIMIT 1";

constexpr int kMetre = 9001, kUnity = 9201, kDegrees[] = {9102, 9122}, kSexagesimal = 9110;

// DDD.MMSSsss, two figures of minutes and two of seconds, as degrees to 15 figures.
double DegreesOf(double sexagesimal) {
  const double figures = std::round(std::abs(sexagesimal) * 1e12);
  const double degrees = std::floor(figures / 1e12);
  const double minutes = std::fmod(std::floor(figures / 1e10), 100);
  const double seconds = std::fmod(figures, 1e10) / 1e8;
  const double value = degrees + minutes / 60 + seconds / 3600;
  return std::copysign(std::stod(fmt::format("{:.15g}", value)), sexagesimal);
}

json Identifier(int code) { return {{"authority", "EPSG"}, {"code", code}}; }

}  // namespace

std::unique_ptr<RegistryTables> RegistryTables::Open(const std::string& path) {
  constexpr int kKnownLayout = 1;
  std::unique_ptr<SqlDatabase> database = SqlDatabase::Open(path);
  if (!database) return nullptr;
  if (SqlRows rows = database->Find(kLayout); !rows.Next() || rows.Integer(0) != kKnownLayout)
    return nullptr;
  return std::unique_ptr<RegistryTables>(new RegistryTables(std::move(database)));
}

// ---- parts of systems ----

const json& RegistryTables::Unit(int code) {
  json& unit = units_[code];
  if (!unit.is_null()) return unit;
  if (code == kMetre) return unit = "metre";
  if (code == kUnity) return unit = "unity";
  if (code == kDegrees[0] || code == kDegrees[1] || code == kSexagesimal) return unit = "degree";
  SqlRows rows = database_->Find(kUnit, {code});
  if (!rows.Next() || rows.IsNull(1)) throw Untold();
  return unit = {{"name", rows.Text(0)}, {"conversion_factor", rows.Number(1)}};
}

json RegistryTables::Quantity(double value, int unit) {
  return {{"value", unit == kSexagesimal ? DegreesOf(value) : value}, {"unit", Unit(unit)}};
}

json RegistryTables::Parameter(int parameter, double value, int unit) {
  json quantity = Quantity(value, unit);
  quantity["id"] = Identifier(parameter);
  return quantity;
}

const json& RegistryTables::Axes(int coordinateSystem) {
  json& axes = axes_[coordinateSystem];
  if (axes.is_null()) axes = MakeAxes(coordinateSystem);
  return axes;
}

// Axes along meridians, at the poles, have more to them than a direction.
json RegistryTables::MakeAxes(int coordinateSystem) {
  json axes;
  SqlRows rows = database_->Find(kAxes, {coordinateSystem});
  while (rows.Next()) {
    axes["subtype"] = rows.Text(0);
    const std::string direction = rows.Text(1);
    if (direction.find(' ') != std::string::npos) throw Untold();
    axes["axis"].push_back({{"direction", direction}, {"unit", Unit(rows.Integer(2))}});
  }
  if (axes.is_null()) throw Untold();
  return axes;
}

const json* RegistryTables::Geodetic(int code) {
  json& document = geodetic_[code];
  if (document.is_null()) document = MakeGeodetic(code);
  return document.is_null() ? nullptr : &document;
}

json RegistryTables::MakeGeodetic(int code) {
  SqlRows rows = database_->Find(kGeodetic, {code});
  if (!rows.Next()) return nullptr;
  const json& axes = Axes(rows.Integer(2));
  const int unit = rows.Integer(9);
  json ellipsoid = {{"semi_major_axis", Quantity(rows.Number(6), unit)}};
  if (rows.IsNull(8))
    ellipsoid["inverse_flattening"] = rows.Number(7);
  else
    ellipsoid["semi_minor_axis"] = Quantity(rows.Number(8), unit);
  json datum = {{"name", rows.Text(3)}, {"ellipsoid", std::move(ellipsoid)}};
  if (!rows.IsNull(5)) datum["frame_reference_epoch"] = rows.Number(5);
  if (rows.Number(10) != 0)
    datum["prime_meridian"]["longitude"] = Quantity(rows.Number(10), rows.Integer(11));
  return {{"type", rows.Text(1) == "geocentric" ? "GeodeticCRS" : "GeographicCRS"},
          {"name", rows.Text(0)},
          {rows.IsNull(4) ? "datum" : "datum_ensemble", std::move(datum)},
          {"coordinate_system", axes},
          {"deprecated", rows.Integer(12) != 0},
          {"id", Identifier(code)}};
}

// The code of the geographic system with two axes on the datum of one with any; empty for none.
std::string RegistryTables::GeographicOn(int code, const json& document) {
  const bool plain = document.at("type") == "GeographicCRS" &&
                     document.at("coordinate_system").at("axis").size() == 2;
  if (plain) return std::to_string(code);
  SqlRows rows = database_->Find(kGeographicOn, {code});
  return rows.Next() ? rows.Text(0) : "";
}

void RegistryTables::FindArea(const char* table, RegisteredCrs& found) {
  SqlRows rows = database_->Find(kArea, {table, std::stoi(found.code)});
  if (rows.Next() && !rows.IsNull(0))
    found.area = {rows.Number(0), rows.Number(1), rows.Number(2), rows.Number(3)};
}

// ---- systems ----

bool RegistryTables::FindGeodetic(int code, RegisteredCrs& found) {
  const json* document = Geodetic(code);
  if (!document) return false;
  if (document->at("deprecated").get<bool>()) throw Untold();
  found.name = document->at("name").get<std::string>();
  found.document = *document;
  found.geographic = GeographicOn(code, *document);
  FindArea("geodetic_crs", found);
  return true;
}

bool RegistryTables::FindProjected(int code, RegisteredCrs& found) {
  SqlRows rows = database_->Find(kProjected, {code});
  if (!rows.Next()) return false;
  const int base = rows.Integer(2);
  const json* geodetic = Geodetic(base);
  if (!geodetic) throw Untold();
  json parameters = json::array();
  for (int i = 0; i < kConversionParameters; ++i) {
    const int column = kFirstParameterColumn + 3 * i;
    if (rows.IsNull(column)) break;
    parameters.push_back(
        Parameter(rows.Integer(column), rows.Number(column + 1), rows.Integer(column + 2)));
  }
  found.name = rows.Text(0);
  found.document = {{"type", "ProjectedCRS"},
                    {"name", found.name},
                    {"base_crs", *geodetic},
                    {"conversion",
                     {{"method", {{"name", rows.Text(4)}, {"id", Identifier(rows.Integer(3))}}},
                      {"parameters", std::move(parameters)}}},
                    {"coordinate_system", Axes(rows.Integer(1))},
                    {"id", Identifier(code)}};
  found.geographic = GeographicOn(base, *geodetic);
  FindArea("projected_crs", found);
  return true;
}

bool RegistryTables::FindVertical(int code, RegisteredCrs& found) {
  SqlRows rows = database_->Find(kVertical, {code});
  if (!rows.Next()) return false;
  found.name = rows.Text(0);
  found.document = {{"type", "VerticalCRS"},
                    {"name", found.name},
                    {"coordinate_system", Axes(rows.Integer(1))},
                    {"id", Identifier(code)}};
  FindArea("vertical_crs", found);
  return true;
}

bool RegistryTables::FindCompound(int code, RegisteredCrs& found) {
  SqlRows rows = database_->Find(kCompound, {code});
  if (!rows.Next()) return false;
  found.name = rows.Text(0);
  found.horizontal = rows.Text(1);
  found.vertical = rows.Text(2);
  found.document = {{"type", "CompoundCRS"}, {"name", found.name}, {"id", Identifier(code)}};
  RegisteredCrs horizontal;
  horizontal.code = found.horizontal;
  const int part = rows.Integer(1);
  if (!FindProjected(part, horizontal) && !FindGeodetic(part, horizontal)) throw Untold();
  found.geographic = horizontal.geographic;
  FindArea("compound_crs", found);
  return true;
}

std::optional<RegisteredCrs> RegistryTables::Crs(const std::string& code) {
  if (!IsEpsgCode(code)) return std::nullopt;
  const int number = std::stoi(code);
  RegisteredCrs found;
  found.code = code;
  try {
    if (FindGeodetic(number, found) || FindProjected(number, found) ||
        FindVertical(number, found) || FindCompound(number, found))
      return found;
  } catch (const Untold&) {
  }
  return std::nullopt;
}

// ---- operations ----

std::optional<std::vector<RegisteredOperation>> RegistryTables::Operations(
    const std::string& source, const std::string& target, const GeoBox& box) {
  if (!IsEpsgCode(source) || !IsEpsgCode(target)) return std::nullopt;
  try {
    return OperationTables(*this).Between(std::stoi(source), std::stoi(target), box);
  } catch (const Untold&) {
    return std::nullopt;
  }
}

std::optional<ProjGrid> RegistryTables::Grid(const std::string& code) {
  SqlRows rows = database_->Find(kGrid, {code});
  if (!rows.Next()) return std::nullopt;
  if (rows.IsNull(1)) return ProjGrid{rows.Text(0)};
  return ProjGrid{rows.Text(1), rows.Integer(2) != 0};
}

std::optional<GridFile> RegistryTables::File(const std::string& name) {
  SqlRows rows = database_->Find(kFile, {name});
  if (!rows.Next()) return std::nullopt;
  return GridFile{{rows.Text(0), rows.Text(1)}, rows.Text(2)};
}

}  // namespace geomath_files
