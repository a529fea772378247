#include "tools/control_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>

#include "tools/name_match.h"
#include "tools/number_text.h"
#include "tools/point_source.h"
#include "tools/user_error.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
const std::vector<std::string> kUses = {"none", "vertical", "horizontal", "both", "rotation"};

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  return first == std::string::npos ? ""
                                    : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// A coordinate of a row: where it goes and which bit says that it is there.
struct Coordinate {
  const char* column;
  double IdenticalPoint::*field;
  std::uint32_t IdenticalPoint::*flags;
  std::uint32_t bit;
  std::optional<AngleKind> angle;
};
const Coordinate kCoordinates[] = {
    {"lat", &IdenticalPoint::globalN, &IdenticalPoint::globalFlags, kHasNorth, AngleKind::latitude},
    {"lon", &IdenticalPoint::globalE, &IdenticalPoint::globalFlags, kHasEast, AngleKind::longitude},
    {"h", &IdenticalPoint::globalH, &IdenticalPoint::globalFlags, kHasHeight, {}},
    {"local_n", &IdenticalPoint::localN, &IdenticalPoint::localFlags, kHasNorth, {}},
    {"local_e", &IdenticalPoint::localE, &IdenticalPoint::localFlags, kHasEast, {}},
    {"local_h", &IdenticalPoint::localH, &IdenticalPoint::localFlags, kHasHeight, {}},
};

class ControlReader {
 public:
  explicit ControlReader(PointSource& source) : source_(source) {
    for (const Coordinate& coordinate : kCoordinates)
      columns_.push_back(RequireColumn(coordinate.column));
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
    IdenticalPoint& p = point.given;
    for (std::size_t i = 0; i < std::size(kCoordinates); ++i) {
      const Coordinate& coordinate = kCoordinates[i];
      p.*coordinate.field = 0;
      const std::string text = Trimmed(record.Text(columns_[i]));
      if (text.empty()) continue;
      const ParsedNumber number =
          coordinate.angle ? ParseAngle(text, *coordinate.angle) : ParseNumber(text);
      if (!number) Fail(record, std::string(coordinate.column) + " " + number.problem);
      p.*coordinate.field = number.value;
      p.*coordinate.flags |= coordinate.bit;
    }
    p.scaleHeight = p.globalH;
    p.residualN = p.residualE = p.residualH = kNaN;
    p.use = UseOf(record, p);
    return point;
  }

  std::int32_t UseOf(const Record& record, const IdenticalPoint& p) const {
    const std::string text = use_ ? FoldName(Trimmed(record.Text(*use_))) : "";
    if (!use_) {
      constexpr std::uint32_t kPlane = kHasNorth | kHasEast;
      const std::uint32_t both = p.globalFlags & p.localFlags;
      return ((both & kPlane) == kPlane ? PointUseHorizontal : 0) |
             (both & kHasHeight ? PointUseVertical : 0);
    }
    for (std::size_t code = 0; code < kUses.size(); ++code) {
      if (text == kUses[code] || text == std::to_string(code))
        return static_cast<std::int32_t>(code);
    }
    Fail(record, fmt::format("use is \"{}\"; it is a code from 0 to 4 or one of {}",
                             Printable(record.Text(*use_)), ListNames(kUses)));
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
