#include "files/models/shift_json.h"

#include <fmt/format.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "files/gdal/ogr.h"
#include "files/system/json_section.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/shift/triangulation.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_files {
namespace {

class TriangulationReader {
 public:
  TriangulationReader(const std::string& text, const ShiftChoice& choice)
      : choice_(choice), root_(ParseJson(text, choice.file)) {}

  std::unique_ptr<CoordinateShift> Read() {
    if (Text("file_type") != "triangulation_file")
      Fail("file_type", "is not \"triangulation_file\": the file holds no triangulation");
    if (const std::string version = Text("format_version"); version != "1.0" && version != "1.1")
      Fail("format_version", fmt::format("is \"{}\"; 1.0 and 1.1 are known", Printable(version)));
    definition_.components = Components();
    definition_.space = choice_.space ? *choice_.space : Space();
    definition_.fallback = Fallback();
    ReadVertices();
    ReadTriangles();
    std::string reason;
    std::unique_ptr<CoordinateShift> made = Triangulation::Make(definition_, &reason);
    if (!made) throw UserError(fmt::format("{}: {}", choice_.file, reason));
    return made;
  }

 private:
  [[noreturn]] void Fail(const std::string& place, const std::string& complaint) const {
    throw UserError(fmt::format("{}: \"{}\" {}", choice_.file, place, complaint));
  }

  std::string Text(const char* key) const {
    const auto found = root_.find(key);
    if (found == root_.end() || !found->is_string()) Fail(key, "is missing: a text belongs there");
    return found->get<std::string>();
  }

  const json& List(const char* key) const {
    const auto found = root_.find(key);
    if (found == root_.end() || !found->is_array()) Fail(key, "is missing: a list belongs there");
    return *found;
  }

  ShiftComponents Components() const {
    bool horizontal = false, vertical = false;
    for (const json& component : List("transformed_components")) {
      horizontal |= component == "horizontal";
      vertical |= component == "vertical";
      if (component != "horizontal" && component != "vertical")
        Fail("transformed_components", "has a word other than \"horizontal\" and \"vertical\"");
    }
    if (!horizontal && !vertical) Fail("transformed_components", "is empty");
    if (!vertical) return ShiftComponents::horizontal;
    return horizontal ? ShiftComponents::horizontalAndVertical : ShiftComponents::vertical;
  }

  TriangulationFallback Fallback() const {
    if (!root_.contains("fallback_strategy")) return TriangulationFallback::none;
    const std::string word = Text("fallback_strategy");
    if (word == "none") return TriangulationFallback::none;
    if (word == "nearest_side") return TriangulationFallback::nearestSide;
    if (word == "nearest_centroid") return TriangulationFallback::nearestCentroid;
    Fail("fallback_strategy",
         fmt::format("is \"{}\"; \"none\", \"nearest_side\" and \"nearest_centroid\" are known",
                     Printable(word)));
  }

  // Of the first of its systems that the registry knows.
  ShiftSpace Space() const {
    PrepareOgr();
    constexpr const char* kOptions[] = {"ALLOW_NETWORK_ACCESS=NO", "ALLOW_FILE_ACCESS=NO", nullptr};
    for (const char* key : {"input_crs", "output_crs"}) {
      OGRSpatialReference system;
      if (!root_.contains(key) ||
          system.SetFromUserInput(Text(key).c_str(), kOptions) != OGRERR_NONE)
        continue;
      if (system.IsProjected()) return ShiftSpace::plane;
      if (system.IsGeographic()) return ShiftSpace::geographic;
    }
    Fail("input_crs",
         "is no system that is known: say by \"coordinates\" whether they are \"geographic\" or "
         "\"plane\"");
  }

  // The column of a name, or of none where it is absent.
  int Column(const char* list, const char* name) const {
    const json& columns = List(list);
    const auto found = std::find(columns.begin(), columns.end(), name);
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
  }

  int RequiredColumn(const char* list, const char* name) const {
    const int column = Column(list, name);
    if (column < 0) Fail(list, fmt::format("has no column \"{}\"", name));
    return column;
  }

  [[noreturn]] void FailIn(const char* list, std::size_t row, const char* complaint) const {
    Fail(fmt::format("{}[{}]", list, row), complaint);
  }

  double Number(const json& row, int column, std::size_t i) const {
    const auto at = static_cast<std::size_t>(column);
    if (!row.is_array() || at >= row.size() || !row[at].is_number())
      FailIn("vertices", i, "has not a number in each column");
    return row[at].get<double>();
  }

  void ReadVertices() {
    constexpr const char* kList = "vertices_columns";
    const bool horizontal = definition_.components != ShiftComponents::vertical;
    const bool vertical = definition_.components != ShiftComponents::horizontal;
    const double unit = definition_.space == ShiftSpace::geographic ? kRadPerDeg : 1;
    const int x = RequiredColumn(kList, "source_x"), y = RequiredColumn(kList, "source_y");
    const int targetX = horizontal ? RequiredColumn(kList, "target_x") : -1;
    const int targetY = horizontal ? RequiredColumn(kList, "target_y") : -1;
    const int offset = vertical ? Column(kList, "offset_z") : -1;
    const bool difference = vertical && offset < 0;
    const int z = difference ? RequiredColumn(kList, "source_z") : -1;
    const int targetZ = difference ? RequiredColumn(kList, "target_z") : -1;
    const json& rows = List("vertices");
    definition_.vertices.reserve(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const json& row = rows[i];
      TriangulationVertex vertex;
      vertex.north = Number(row, y, i) * unit;
      vertex.east = Number(row, x, i) * unit;
      if (horizontal) {
        vertex.targetNorth = Number(row, targetY, i) * unit;
        vertex.targetEast = Number(row, targetX, i) * unit;
      }
      if (difference) vertex.heightOffset = Number(row, targetZ, i) - Number(row, z, i);
      if (offset >= 0) vertex.heightOffset = Number(row, offset, i);
      definition_.vertices.push_back(vertex);
    }
  }

  void ReadTriangles() {
    std::array<std::size_t, 3> columns{};
    for (int k = 0; k < 3; ++k)
      columns[static_cast<std::size_t>(k)] = static_cast<std::size_t>(
          RequiredColumn("triangles_columns", fmt::format("idx_vertex{}", k + 1).c_str()));
    const json& rows = List("triangles");
    definition_.triangles.reserve(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      std::array<std::uint32_t, 3> triangle{};
      for (std::size_t k = 0; k < 3; ++k) {
        const json& row = rows[i];
        if (!row.is_array() || columns[k] >= row.size() || !row[columns[k]].is_number_unsigned())
          FailIn("triangles", i, "has not three numbers of vertices");
        const auto vertex = row[columns[k]].get<std::uint64_t>();
        if (vertex >= definition_.vertices.size())
          FailIn("triangles", i, "names a vertex that is not there");
        triangle[k] = static_cast<std::uint32_t>(vertex);
      }
      definition_.triangles.push_back(triangle);
    }
  }

  const ShiftChoice& choice_;
  json root_;
  TriangulationDefinition definition_;
};

}  // namespace

std::unique_ptr<CoordinateShift> ParseShiftJson(const std::string& text,
                                                const ShiftChoice& choice) {
  return TriangulationReader(text, choice).Read();
}

}  // namespace geomath_files
