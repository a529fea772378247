#include "files/site/control_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "files/points/point_source.h"
#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  return first == std::string::npos ? ""
                                    : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Of the columns of control points, those that hold angles.
std::optional<AngleKind> AngleOf(std::size_t column) {
  if (column == 0) return AngleKind::latitude;
  if (column == 1) return AngleKind::longitude;
  return {};
}

class ControlReader {
 public:
  explicit ControlReader(PointSource& source) : source_(source) {
    for (const char* column : kControlColumns) columns_.push_back(RequireColumn(column));
    use_ = FindColumn("use");
    name_ = FindColumn("name");
  }

  std::vector<ControlPoint> Read() {
    std::vector<ControlPoint> points;
    Record record;
    while (source_.Next(record)) {
      if (record.IsBlank()) continue;
      if (const std::string problem = source_.Problem(record); !problem.empty())
        Fail(record, problem);
      points.push_back(ReadPoint(record));
      if (points.back().name.empty()) points.back().name = std::to_string(points.size());
    }
    return points;
  }

 private:
  std::optional<std::size_t> FindColumn(const std::string& name) const {
    const std::vector<std::string> columns = source_.ColumnNames();
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const std::string& column) {
      return FoldName(column) == FoldName(name);
    });
    if (found == columns.end()) return {};
    return static_cast<std::size_t>(found - columns.begin());
  }

  std::size_t RequireColumn(const std::string& name) const {
    if (const auto column = FindColumn(name)) return *column;
    throw UserError(fmt::format("{}: there is no column \"{}\"; {}", source_.Name(), name,
                                SuggestName(name, source_.ColumnNames())));
  }

  [[noreturn]] void Fail(const Record& record, const std::string& problem) const {
    throw UserError(fmt::format("{}, {}: {}", source_.Name(), source_.Place(record), problem));
  }

  ControlPoint ReadPoint(const Record& record) const {
    ControlPoint point;
    if (name_) point.name = Trimmed(record.Text(*name_));
    IdenticalPoint& p = point.given = NewControl();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const std::string text = Trimmed(record.Text(columns_[i]));
      if (text.empty()) continue;
      const auto angle = AngleOf(i);
      const ParsedNumber number = angle ? ParseAngle(text, *angle) : ParseNumber(text);
      if (!number) Fail(record, std::string(kControlColumns[i]) + " " + number.problem);
      SetControl(p, i, number.value);
    }
    p.use = use_ ? ReadUse(record, record.Text(*use_)) : WholeUse(p);
    return point;
  }

  std::int32_t ReadUse(const Record& record, const std::string& text) const {
    if (const auto use = PointUseOf(Trimmed(text))) return *use;
    Fail(record, fmt::format("use is \"{}\"; it is a code from 0 to 4 or one of {}",
                             Printable(text), ListNames(PointUseWords())));
  }

  PointSource& source_;
  std::vector<std::size_t> columns_;
  std::optional<std::size_t> use_, name_;
};

}  // namespace

std::vector<ControlPoint> ReadControl(const std::string& path, const std::string& layer) {
  const auto source = OpenPoints(path, layer);
  return ControlReader(*source).Read();
}

}  // namespace geomath_tools
