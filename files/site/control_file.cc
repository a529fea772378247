#include "files/site/control_file.h"

#include <fmt/format.h>

#include <iterator>
#include <optional>

#include "files/points/point_source.h"
#include "files/points/usual_names.h"
#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"

using namespace zel_cs::geomath;

namespace geomath_files {
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

// What a column may be called. Names of heights that could be global or local are not among them,
// but for "h", which is the global one.
UsualNames NamesOf(std::size_t column) {
  const bool local = column >= 3;
  const std::size_t axis = column % 3;
  UsualNames names{{FoldName(kControlColumns[column])}, {}};
  if (axis == 2) {
    names.others = local ? std::vector<std::string>{"hlocal", "elevation", "z"}
                         : std::vector<std::string>{"hglobal", "ellipsoidalheight"};
    return names;
  }
  const UsualNames& usual =
      UsualAxisNames(local ? CoordinateKind::grid : CoordinateKind::geographic)[axis];
  for (const auto* part : {&usual.own, &usual.others})
    names.others.insert(names.others.end(), part->begin(), part->end());
  return names;
}

class ControlReader {
 public:
  ControlReader(PointSource& source, const ControlSource& from)
      : source_(source), units_(from.units), numbers_(from.decimalComma ? ',' : '\0') {
    for (std::size_t i = 0; i < std::size(kControlColumns); ++i)
      columns_.push_back(RequireColumn(i));
    use_ = FindColumn("use", {{"use"}, {}});
    name_ = FindColumn("name", {{"name"}, {"point", "pointname", "punkt"}});
    for (const char* name : kAccuracyColumns)
      accuracies_.push_back(FindColumn(name, {{FoldName(name)}, {}}));
  }

  ControlTable Read(bool decimalCommaSaid) {
    ControlTable table;
    std::vector<ControlPoint>& points = table.points;
    Record record;
    while (source_.Next(record)) {
      if (record.IsBlank()) continue;
      if (const std::string problem = source_.Problem(record); !problem.empty())
        Fail(record, problem);
      points.push_back(ReadPoint(record));
      if (points.back().name.empty()) points.back().name = std::to_string(points.size());
    }
    if (numbers_.Mark() == ',' && !decimalCommaSaid)
      table.note = source_.Name() + ": numbers are read with a decimal comma";
    return table;
  }

 private:
  std::optional<std::size_t> FindColumn(const char* name, const UsualNames& names) const {
    const std::vector<std::string> columns = source_.ColumnNames();
    const std::vector<std::size_t> found = FindUsual(columns, names);
    if (found.empty()) return {};
    std::vector<std::string> choices;
    for (const std::size_t column : found) choices.push_back(columns[column]);
    if (found.size() > 1)
      throw UserError(fmt::format("{}: {} could each be meant by \"{}\"; call only one so",
                                  source_.Name(), ListNames(choices), name));
    return found.front();
  }

  std::size_t RequireColumn(std::size_t i) const {
    const char* name = kControlColumns[i];
    if (const auto column = FindColumn(name, NamesOf(i))) return *column;
    throw UserError(fmt::format("{}: there is no column \"{}\"; {}", source_.Name(), name,
                                SuggestName(name, source_.ColumnNames())));
  }

  [[noreturn]] void Fail(const Record& record, const std::string& problem) const {
    throw UserError(fmt::format("{}, {}: {}", source_.Name(), source_.Place(record), problem));
  }

  ControlPoint ReadPoint(const Record& record) {
    ControlPoint point;
    if (name_) point.name = Trimmed(record.Text(*name_));
    IdenticalPoint& p = point.given = NewControl();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const std::string text = Trimmed(record.Text(columns_[i]));
      if (text.empty()) continue;
      const auto angle = AngleOf(i);
      const ParsedNumber number = angle ? numbers_.Angle(text, *angle) : numbers_.Number(text);
      if (!number) Fail(record, std::string(kControlColumns[i]) + " " + number.problem);
      SetControl(p, i, number.value * UnitOfControl(i, units_).metres);
    }
    for (std::size_t i = 0; i < accuracies_.size(); ++i)
      if (accuracies_[i]) point.accuracy[i] = ReadAccuracy(record, *accuracies_[i]);
    if (const std::string problem = AccuracyProblem(point); !problem.empty()) Fail(record, problem);
    p.use = use_ ? ReadUse(record, record.Text(*use_)) : WholeUse(p);
    return point;
  }

  std::optional<double> ReadAccuracy(const Record& record, std::size_t column) {
    const std::string text = Trimmed(record.Text(column));
    if (text.empty()) return {};
    const ParsedNumber number = numbers_.Number(text);
    if (!number) Fail(record, source_.ColumnNames()[column] + " " + number.problem);
    return number.value;
  }

  std::int32_t ReadUse(const Record& record, const std::string& text) const {
    if (const auto use = PointUseOf(Trimmed(text))) return *use;
    Fail(record, fmt::format("use is \"{}\"; it is a code from 0 to 4 or one of {}",
                             Printable(text), ListNames(PointUseWords())));
  }

  PointSource& source_;
  GridUnits units_;
  NumberReader numbers_;
  std::vector<std::size_t> columns_;
  std::optional<std::size_t> use_, name_;
  std::vector<std::optional<std::size_t>> accuracies_;
};

}  // namespace

ControlTable ReadControl(const ControlSource& from) {
  const auto source = OpenPoints(from.path, from.layer, from.columns);
  return ControlReader(*source, from).Read(from.decimalComma);
}

}  // namespace geomath_files
