#include "files/epsg/operation_tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <tuple>

using nlohmann::json;

namespace geomath_files {
namespace {

// Those that lead from one system to the other, of the authorities that PROJ asks for two systems of
// the registry.
constexpr const char* kBetween =
    "SELECT v.table_name, v.auth_name, v.code, v.name, v.accuracy, v.method_code, v.method_name, "
    "v.source_crs_code, v.target_crs_code, x.description, x.west_lon, x.south_lat, x.east_lon, "
    "x.north_lat FROM coordinate_operation_view v JOIN usage u ON u.object_table_name = "
    "v.table_name "
    "AND u.object_auth_name = v.auth_name AND u.object_code = v.code JOIN extent x ON "
    "x.auth_name = u.extent_auth_name AND x.code = u.extent_code "
    "WHERE v.source_crs_auth_name = 'EPSG' AND v.source_crs_code = ?1 "
    "AND v.target_crs_auth_name = 'EPSG' AND v.target_crs_code = ?2 AND v.deprecated = 0 "
    "AND v.auth_name IN ('PROJ', 'EPSG', 'NKG')";
constexpr int kAreaColumn = 9;
constexpr double kUnknown = 999;  // an accuracy
constexpr const char* kOperation =
    "SELECT table_name, auth_name, code, name, accuracy, method_code, method_name, "
    "source_crs_code, "
    "target_crs_code FROM coordinate_operation_view WHERE auth_name = ?1 AND code = ?2 "
    "AND source_crs_auth_name = 'EPSG' AND target_crs_auth_name = 'EPSG'";
constexpr const char* kSteps =
    "SELECT step_auth_name, step_code FROM concatenated_operation_step "
    "WHERE operation_auth_name = ?1 AND operation_code = ?2 ORDER BY step_number";
constexpr const char* kReplacements =
    "SELECT replacement_auth_name, replacement_code FROM supersession "
    "WHERE superseded_table_name = ?1 AND superseded_auth_name = ?2 AND superseded_code = ?3 "
    "AND replacement_table_name = superseded_table_name AND same_source_target_crs = 1";
// With whether PROJ has a file for the grid, and one of its name.
constexpr const char* kGrid =
    "SELECT grid_param_code, grid_name, grid2_param_code, grid2_name, interpolation_crs_code, "
    "EXISTS (SELECT 1 FROM grid_alternatives WHERE original_grid_name = grid_name), "
    "EXISTS (SELECT 1 FROM grid_alternatives WHERE proj_grid_name = grid_name "
    "OR old_proj_grid_name = grid_name) FROM grid_transformation WHERE auth_name = ?1 AND code = "
    "?2";
constexpr const char* kHelmert =
    "SELECT tx, ty, tz, translation_uom_code, rx, ry, rz, rotation_uom_code, scale_difference, "
    "scale_difference_uom_code, px, py, pz, pivot_uom_code, epoch FROM "
    "helmert_transformation_table "
    "WHERE auth_name = ?1 AND code = ?2";
constexpr const char* kOffsets =
    "SELECT param1_code, param1_value, param1_uom_code, param2_code, param2_value, param2_uom_code "
    "FROM other_transformation WHERE auth_name = ?1 AND code = ?2";

// Columns of kHelmert with their parameters, behind which the one with their unit stands.
struct HelmertColumns {
  int first;
  std::vector<int> parameters;
};
const std::vector<HelmertColumns> kHelmertColumns = {
    {0, {8605, 8606, 8607}}, {4, {8608, 8609, 8610}}, {8, {8611}}, {10, {8617, 8618, 8667}}};
constexpr int kEpochColumn = 14;

// Methods of which the inverse is the same method with the other sign: translations of geocentric
// coordinates, rotation of longitude and offsets of latitude and longitude.
constexpr int kTranslations[] = {1031, 1035, 9603}, kLongitudeRotation = 9601, kOffsetMethod = 9619;
// NADCON and NADCON5, whose files PROJ does not take under the registry's names.
constexpr int kNadcon[] = {9613, 1074, 1075};

// Of two that are equally good, these go before the others: the exact meridian of Paris, and null
// transformations of the frames that are WGS 84 to the metre.
constexpr std::string_view kFirstOfEquals[] = {"1763", "9337", "1150", "8450"};

template <class Codes, class Code>
bool Contains(const Codes& codes, const Code& code) {
  return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

double Turned(double value) { return value == 0 ? 0 : -value; }

}  // namespace

// A transformation as its table has it, or turned round.
struct OperationTables::Row {
  std::string table, authority, code, name;
  double accuracy;
  int method;
  std::string methodName;
  int source, target;
  bool inverse = false;
  std::string areaName = {};
  GeoBox area = {};
  double covered = 0;
  // Its own steps, or one; and what its grids are to PROJ.
  std::vector<Row> steps = {};
  bool hasGrid = false, hasFile = true, isGridKnown = true, isNadcon = false;

  explicit Row(const SqlRows& row)
      : table(row.Text(0)),
        authority(row.Text(1)),
        code(row.Text(2)),
        name(row.Text(3)),
        accuracy(row.IsNull(4) || row.Number(4) == kUnknown ? -1 : row.Number(4)),
        method(row.Integer(5)),
        methodName(row.Text(6)),
        source(row.Integer(7)),
        target(row.Integer(8)) {}

  int From() const { return inverse ? target : source; }
  int To() const { return inverse ? source : target; }
  std::string Name() const { return inverse ? "Inverse of " + name : name; }
  bool IsPreferred() const { return authority == "EPSG" && Contains(kFirstOfEquals, code); }
  json Identifier() const {
    const std::string of = inverse ? "INVERSE(" + authority + ")" : authority;
    if (authority != "EPSG") return {{"authority", of}, {"code", code}};
    return {{"authority", of}, {"code", std::stoi(code)}};
  }
  bool IsSame(const Row& other) const {
    return table == other.table && authority == other.authority && code == other.code;
  }

  // PROJ's order: what it can take first, then known accuracies, the larger part of the box, the better
  // accuracy, no grid, the shorter name and the one with the higher number.
  bool GoesBefore(const Row& other) const {
    const auto rank = [](const Row& row) {
      return std::tuple(row.isNadcon, !row.isGridKnown, row.accuracy < 0, -row.covered,
                        row.accuracy, row.hasGrid, !row.IsPreferred(), row.Name().size());
    };
    const auto own = rank(*this), others = rank(other);
    return own != others ? own < others : Name() > other.Name();
  }
};

std::optional<std::vector<RegisteredOperation>> OperationTables::Between(int source, int target,
                                                                         const GeoBox& box) {
  std::vector<Row> rows = Directly(source, target, false, box);
  for (Row& row : Directly(target, source, true, box)) rows.push_back(std::move(row));
  std::vector<Row> candidates;
  for (const Row& row : rows)
    if (row.covered > 0 && !IsSuperseded(row, rows)) candidates.push_back(row);
  const auto isTaken = [](const Row& row) { return row.isGridKnown && !row.isNadcon; };
  if (std::none_of(candidates.begin(), candidates.end(), isTaken)) return std::nullopt;
  std::sort(candidates.begin(), candidates.end(),
            [](const Row& a, const Row& b) { return a.GoesBefore(b); });
  std::vector<RegisteredOperation> found;
  for (const Row& row : candidates) {
    RegisteredOperation& operation = found.emplace_back();
    if (row.authority == "EPSG") operation.code = row.code;
    operation.name = row.Name();
    operation.accuracy = row.accuracy;
    operation.document = std::make_shared<const json>(DocumentOf(row));
    operation.area = row.area;
    operation.areaName = row.areaName;
  }
  return found;
}

std::vector<OperationTables::Row> OperationTables::Directly(int source, int target, bool inverse,
                                                            const GeoBox& box) {
  std::vector<Row> rows;
  {
    SqlRows found = tables_.database_->Find(kBetween, {source, target});
    while (found.Next()) {
      Row& row = rows.emplace_back(found);
      if (rows.size() > 1 && row.IsSame(rows[rows.size() - 2])) {  // of another use
        rows.pop_back();
        continue;
      }
      row.inverse = inverse;
      row.areaName = found.Text(kAreaColumn);
      row.area = {found.Number(kAreaColumn + 1), found.Number(kAreaColumn + 2),
                  found.Number(kAreaColumn + 3), found.Number(kAreaColumn + 4)};
      const bool isPlace = box.Surface() == 0;
      row.covered = isPlace ? row.area.Contains(box.south, box.west) : box.CoveredBy(row.area);
    }
  }
  for (Row& row : rows) {
    if (row.table == "concatenated_operation") FindSteps(row);
    if (row.table == "grid_transformation") LookAtGrid(row);
  }
  return rows;
}

// A newer one of the same kind takes the place of another, a grid where PROJ has its file.
bool OperationTables::IsSuperseded(const Row& row, const std::vector<Row>& rows) {
  SqlRows found = tables_.database_->Find(kReplacements, {row.table, row.authority, row.code});
  while (found.Next()) {
    const std::string authority = found.Text(0), code = found.Text(1);
    for (const Row& other : rows)
      if (other.table == row.table && other.authority == authority && other.code == code)
        if (other.hasFile) return true;
  }
  return false;
}

void OperationTables::LookAtGrid(Row& row) {
  SqlRows found = tables_.database_->Find(kGrid, {row.authority, row.code});
  if (!found.Next()) throw RegistryTables::Untold();
  row.hasGrid = true;
  row.hasFile = found.Integer(5) != 0;
  row.isGridKnown = found.Integer(6) != 0;
  row.isNadcon = Contains(kNadcon, row.method);
}

// Each begins where the one before it ends, which says which way it leads.
void OperationTables::FindSteps(Row& row) {
  std::vector<std::pair<std::string, std::string>> codes;
  {
    SqlRows found = tables_.database_->Find(kSteps, {row.authority, row.code});
    while (found.Next()) codes.emplace_back(found.Text(0), found.Text(1));
  }
  int from = row.source;
  for (const auto& [authority, code] : codes) {
    SqlRows found = tables_.database_->Find(kOperation, {authority, code});
    if (!found.Next()) throw RegistryTables::Untold();
    Row& step = row.steps.emplace_back(found);
    step.inverse = step.source != from;
    if (step.From() != from) throw RegistryTables::Untold();
    from = step.To();
  }
  if (from != row.target || row.steps.empty()) throw RegistryTables::Untold();
  for (Row& step : row.steps) {
    if (step.table == "grid_transformation") LookAtGrid(step);
    row.hasGrid = row.hasGrid || step.hasGrid;
    row.isGridKnown = row.isGridKnown && step.isGridKnown;
    row.isNadcon = row.isNadcon || step.isNadcon;
  }
  if (!row.inverse) return;
  std::reverse(row.steps.begin(), row.steps.end());
  for (Row& step : row.steps) step.inverse = !step.inverse;
}

// ---- documents ----

json OperationTables::DocumentOf(const Row& row) {
  const json *from = tables_.Geodetic(row.From()), *to = tables_.Geodetic(row.To());
  if (!from || !to) throw RegistryTables::Untold();
  json document = {
      {"name", row.Name()}, {"source_crs", *from}, {"target_crs", *to}, {"id", row.Identifier()}};
  if (row.table == "grid_transformation")
    AddGrid(row, document);
  else if (row.table == "helmert_transformation")
    AddHelmert(row, document);
  else if (row.table == "other_transformation")
    AddOffsets(row, document);
  for (const Row& step : row.steps) document["steps"].push_back(DocumentOf(step));
  return document;
}

namespace {

// Of a method that is turned round by its name alone.
json MethodOf(int code, const std::string& name, bool inverse) {
  return {{"name", inverse ? "Inverse of " + name : name},
          {"id", {{"authority", inverse ? "INVERSE(EPSG)" : "EPSG"}, {"code", code}}}};
}

}  // namespace

void OperationTables::AddGrid(const Row& row, json& document) {
  SqlRows found = tables_.database_->Find(kGrid, {row.authority, row.code});
  if (!found.Next()) throw RegistryTables::Untold();
  document["method"] = MethodOf(row.method, row.methodName, row.inverse);
  json& parameters = document["parameters"];
  for (const int column : {0, 2})
    if (!found.IsNull(column))
      parameters.push_back({{"value", found.Text(column + 1)},
                            {"id", {{"authority", "EPSG"}, {"code", found.Integer(column)}}}});
  if (!found.IsNull(4))
    document["interpolation_crs"]["id"] = {{"authority", "EPSG"}, {"code", found.Integer(4)}};
}

void OperationTables::AddHelmert(const Row& row, json& document) {
  SqlRows found = tables_.database_->Find(kHelmert, {row.authority, row.code});
  if (!found.Next() || !found.IsNull(kEpochColumn)) throw RegistryTables::Untold();
  const bool turned = row.inverse && Contains(kTranslations, row.method);
  document["method"] = MethodOf(row.method, row.methodName, row.inverse && !turned);
  json& parameters = document["parameters"];
  for (const HelmertColumns& columns : kHelmertColumns) {
    if (found.IsNull(columns.first)) continue;
    const int unit = found.Integer(columns.first + static_cast<int>(columns.parameters.size()));
    for (int column = columns.first; const int parameter : columns.parameters) {
      const double value = found.Number(column++);
      parameters.push_back(tables_.Parameter(parameter, turned ? Turned(value) : value, unit));
    }
  }
}

void OperationTables::AddOffsets(const Row& row, json& document) {
  SqlRows found = tables_.database_->Find(kOffsets, {row.authority, row.code});
  const bool told = row.method == kLongitudeRotation || row.method == kOffsetMethod;
  if (!told || !found.Next()) throw RegistryTables::Untold();
  document["method"] = MethodOf(row.method, row.methodName, false);
  json& parameters = document["parameters"];
  for (const int column : {0, 3}) {
    if (found.IsNull(column)) continue;
    const double value = found.Number(column + 1);
    parameters.push_back(tables_.Parameter(
        found.Integer(column), row.inverse ? Turned(value) : value, found.Integer(column + 2)));
  }
}

}  // namespace geomath_files
