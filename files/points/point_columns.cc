#include "files/points/point_columns.h"

#include <fmt/format.h>
#include <ogr_geometry.h>

#include <cmath>

#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"

namespace geomath_tools {
namespace {

// Column names looked for when none are chosen, the first that is there.
using Defaults = std::array<std::vector<std::string>, 3>;
const Defaults kGeographicDefaults = {{{"lat"}, {"lon"}, {"h"}}};
const Defaults kGridDefaults = {{{"n"}, {"e"}, {"h_local", "h"}}};

// The column of that name; the letter case matters only when two names differ in nothing else.
std::optional<std::size_t> FindColumn(const std::vector<std::string>& columns,
                                      const std::string& name) {
  const auto sameLetters = [](const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
      return std::tolower(x) == std::tolower(y);
    });
  };
  std::optional<std::size_t> similar;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] == name) return i;
    if (!similar && sameLetters(columns[i], name)) similar = i;
  }
  return similar;
}

// Beyond the Moon: a slip, not a coordinate.
constexpr double kFarthest = 1e9;  // metres

std::string LengthProblem(double metres) {
  if (std::abs(metres) <= kFarthest) return {};
  return fmt::format("{:.3g} m is outside -{:.0e} to {:.0e} m", metres, kFarthest, kFarthest);
}

bool IsNumeric(OGRFieldType type) {
  return type == OFTReal || type == OFTInteger || type == OFTInteger64;
}

}  // namespace

PointColumns::PointColumns(const PointSource& source, CoordinateKind kind,
                           const ColumnChoice& choice)
    : kind_(kind), fixedHeight_(choice.fixedHeight) {
  const std::vector<std::string> columns = source.ColumnNames();
  Defaults wanted = kind == CoordinateKind::geographic ? kGeographicDefaults : kGridDefaults;
  for (std::size_t i = 0; i < choice.names.size(); ++i) wanted[i] = {choice.names[i]};

  const std::size_t needed = fixedHeight_ ? 2 : 3;
  std::string missing;
  for (std::size_t axis = 0; axis < needed; ++axis) {
    std::optional<std::size_t> found;
    for (const std::string& name : wanted[axis]) {
      if (!found) found = FindColumn(columns, name);
    }
    if (found) {
      columns_[axis] = *found;
      names_[axis] = columns[*found];
    } else if (missing.empty()) {
      missing = wanted[axis].front();
    }
  }
  if (missing.empty()) return;
  fromGeometry_ = source.HasGeometry() && choice.names.empty();
  if (fromGeometry_) {
    const bool positions = kind == CoordinateKind::geographic;
    if (!choice.ignoreCrs)
      layerCrs_.emplace(source.Name(), source.Crs(),
                        ExpectedCrs{positions, choice.crs, !fixedHeight_});
    return;
  }
  const bool geographic = kind == CoordinateKind::geographic;
  throw UserError(fmt::format(
      "{}: there is no column \"{}\"; {}. Choose the columns with --columns {}{}", source.Name(),
      missing, SuggestName(missing, columns), geographic ? "LAT,LON,H" : "N,E,H",
      columns.size() > 1 ? ", or give all points one height with --fixed-height METRES" : ""));
}

std::string PointColumns::CheckRange(std::size_t axis, double value) const {
  if (!std::isfinite(value)) return "is not a finite number";
  if (axis == 2 || kind_ == CoordinateKind::grid) return LengthProblem(value);
  return AngleRangeProblem(value, axis == 0 ? AngleKind::latitude : AngleKind::longitude);
}

std::string PointColumns::ReadColumn(const Record& record, std::size_t axis, double& value) const {
  const std::size_t column = columns_[axis];
  if (record.feature) {
    const int field = static_cast<int>(column);
    if (IsNumeric(record.feature->GetFieldDefnRef(field)->GetType()) &&
        record.feature->IsFieldSetAndNotNull(field)) {
      value = record.feature->GetFieldAsDouble(field);
      return CheckRange(axis, value);
    }
  }
  const std::string text = record.Text(column);
  const bool plain = axis == 2 || kind_ == CoordinateKind::grid;
  const ParsedNumber number =
      plain ? ParseNumber(text)
            : ParseAngle(text, axis == 0 ? AngleKind::latitude : AngleKind::longitude);
  value = number.value;
  return number ? CheckRange(axis, value) : number.problem;
}

std::string PointColumns::ReadGeometry(const Record& record, std::array<double, 3>& point) const {
  const OGRGeometry* geometry = record.feature->GetGeometryRef();
  if (!geometry || wkbFlatten(geometry->getGeometryType()) != wkbPoint || geometry->IsEmpty())
    return "the feature has no point geometry";
  const OGRPoint* given = geometry->toPoint();
  if (!fixedHeight_ && !given->Is3D())
    return "the point has no height (--fixed-height METRES gives all points one)";
  point = {given->getY(), given->getX(), fixedHeight_.value_or(given->getZ())};
  if (layerCrs_ && !layerCrs_->Convert(point))
    return "the point cannot be converted to the expected coordinate system";
  constexpr const char* names[] = {"y", "x", "z"};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (const std::string problem = CheckRange(axis, point[axis]); !problem.empty())
      return fmt::format("{} of the point {}", names[axis], problem);
  }
  return {};
}

std::string PointColumns::Read(const Record& record, std::array<double, 3>& point) const {
  if (fromGeometry_) return ReadGeometry(record, point);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (axis == 2 && fixedHeight_) {
      point[2] = *fixedHeight_;
      continue;
    }
    const std::string problem = ReadColumn(record, axis, point[axis]);
    if (!problem.empty()) return names_[axis] + " " + problem;
  }
  return {};
}

}  // namespace geomath_tools
