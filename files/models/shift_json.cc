#include "files/models/shift_json.h"

#include <fmt/format.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "files/models/raster_reader.h"
#include "files/system/json_section.h"
#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/shift/triangulation.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_files {
namespace {

// A list of rows, of which a file has many: numbers, NaN for what is none.
struct NumberRows {
  bool there = false;
  std::optional<std::size_t> object;  // the first row that is one
  std::vector<double> values;
  std::vector<std::size_t> ends;  // of the rows, in the values

  std::size_t Size() const { return ends.size(); }
  // NaN where the row has no such column.
  double At(std::size_t row, std::size_t column) const {
    const std::size_t begin = row == 0 ? 0 : ends[row - 1];
    return begin + column < ends[row] ? values[begin + column] : kNone;
  }

  static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
};

// The file while it is parsed: its two lists as numbers, of everything else the texts and the lists
// of texts. Does not go on where ParseJson would complain. RapidJSON goes through what are numbers
// mostly three times as fast as what reads all other JSON here; in place, since its own stack begins at
// a null pointer, with which it reckons.
class TriangulationFile
    : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, TriangulationFile> {
 public:
  NumberRows vertices, triangles;
  json head = json::object();

  bool Parse(std::string text) {
    constexpr unsigned kInPlace = rapidjson::kParseInsituFlag |
                                  rapidjson::kParseNumbersAsStringsFlag |
                                  rapidjson::kParseValidateEncodingFlag;
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    const std::size_t begin = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    rapidjson::InsituStringStream stream(text.data() + begin);
    return !rapidjson::Reader().Parse<kInPlace>(stream, *this).IsError() &&
           begin + stream.Tell() == text.size();
  }

  // Events of the reader; false ends it.
  bool Null() { return Take(nullptr, NumberRows::kNone); }
  bool Bool(bool value) { return Take(value, NumberRows::kNone); }
  // Vertices are counted in figures alone.
  bool RawNumber(const char* text, rapidjson::SizeType size, bool) {
    const std::string_view written(text, size);
    const ParsedNumber number = ParseNumber(written);
    const double value = number ? number.value : NumberRows::kNone;
    const bool counts = written.find_first_not_of("0123456789") == std::string_view::npos;
    return Take(value, list_ == &vertices || counts ? value : NumberRows::kNone);
  }
  bool String(const char* text, rapidjson::SizeType size, bool) {
    return Take(std::string_view(text, size), NumberRows::kNone);
  }

  bool StartObject() { return Open(json::value_t::object); }
  bool StartArray() { return Open(json::value_t::array); }
  bool EndObject(rapidjson::SizeType) { return Close(); }
  bool EndArray(rapidjson::SizeType) { return Close(); }

  bool Key(const char* text, rapidjson::SizeType size, bool) {
    if (depth_ != 1) return true;
    key_.assign(text, size);
    list_ = key_ == "vertices" ? &vertices : key_ == "triangles" ? &triangles : nullptr;
    return !head.contains(key_) && head.emplace(key_, nullptr).second;
  }

 private:
  static constexpr int kKeys = 1, kRows = 2, kColumns = 3, kDeepest = 32;  // levels of nesting

  // A value of a list counts as `number`.
  template <class Value>
  bool Take(const Value& value, double number) {
    if (list_ && depth_ == kColumns) {
      list_->values.push_back(number);
    } else if (list_ && depth_ == kRows) {
      list_->ends.push_back(list_->values.size());
    } else if (!list_ && depth_ == kKeys) {
      head[key_] = value;
    } else if (!list_ && depth_ == kRows && head[key_].is_array()) {
      head[key_].push_back(value);
    }
    return true;
  }

  bool Open(json::value_t kind) {
    const bool object = kind == json::value_t::object;
    if (depth_ == kKeys && list_) list_->there = !object;
    if (depth_ == kRows && list_ && object && !list_->object) list_->object = list_->Size();
    if (depth_ == kColumns || (depth_ == kKeys && !list_)) Take(json(kind), NumberRows::kNone);
    return ++depth_ <= kDeepest;
  }

  bool Close() {
    if (list_ && depth_ == kColumns) list_->ends.push_back(list_->values.size());
    --depth_;
    return true;
  }

  int depth_ = 0;
  std::string key_;
  NumberRows* list_ = nullptr;
};

class TriangulationReader {
 public:
  TriangulationReader(const std::string& text, const ShiftChoice& choice)
      : choice_(choice), root_(file_.head) {
    if (file_.Parse(text)) return;
    ParseJson(text, choice.file);  // throws, saying why
    throw UserError(choice.file + ": is no JSON that can be read");
  }

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
    if (const RasterReader* reader = FindRasterReader())
      for (const char* key : {"input_crs", "output_crs"})
        if (root_.contains(key))
          if (const auto space = reader->SpaceOf(Text(key))) return *space;
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

  const NumberRows& Rows(const char* key, const NumberRows& rows) const {
    if (!rows.there) Fail(key, "is missing: a list belongs there");
    if (rows.object) FailIn(key, *rows.object, "is no list");
    return rows;
  }

  double Number(std::size_t row, int column) const {
    const double number = file_.vertices.At(row, static_cast<std::size_t>(column));
    if (std::isnan(number)) FailIn("vertices", row, "has not a number in each column");
    return number;
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
    const NumberRows& rows = Rows("vertices", file_.vertices);
    definition_.vertices.reserve(rows.Size());
    for (std::size_t i = 0; i < rows.Size(); ++i) {
      TriangulationVertex vertex;
      vertex.north = Number(i, y) * unit;
      vertex.east = Number(i, x) * unit;
      if (horizontal) {
        vertex.targetNorth = Number(i, targetY) * unit;
        vertex.targetEast = Number(i, targetX) * unit;
      }
      if (difference) vertex.heightOffset = Number(i, targetZ) - Number(i, z);
      if (offset >= 0) vertex.heightOffset = Number(i, offset);
      definition_.vertices.push_back(vertex);
    }
  }

  void ReadTriangles() {
    std::array<std::size_t, 3> columns{};
    for (int k = 0; k < 3; ++k)
      columns[static_cast<std::size_t>(k)] = static_cast<std::size_t>(
          RequiredColumn("triangles_columns", fmt::format("idx_vertex{}", k + 1).c_str()));
    const NumberRows& rows = Rows("triangles", file_.triangles);
    definition_.triangles.reserve(rows.Size());
    for (std::size_t i = 0; i < rows.Size(); ++i) {
      std::array<std::uint32_t, 3> triangle{};
      for (std::size_t k = 0; k < 3; ++k) {
        const double vertex = rows.At(i, columns[k]);
        if (std::isnan(vertex)) FailIn("triangles", i, "has not three numbers of vertices");
        if (vertex >= static_cast<double>(definition_.vertices.size()))
          FailIn("triangles", i, "names a vertex that is not there");
        triangle[k] = static_cast<std::uint32_t>(vertex);
      }
      definition_.triangles.push_back(triangle);
    }
  }

  const ShiftChoice& choice_;
  TriangulationFile file_;
  const json& root_;
  TriangulationDefinition definition_;
};

}  // namespace

std::unique_ptr<CoordinateShift> ParseShiftJson(const std::string& text,
                                                const ShiftChoice& choice) {
  return TriangulationReader(text, choice).Read();
}

}  // namespace geomath_files
