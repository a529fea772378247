#include "files/points/point_columns.h"

#include <fmt/format.h>
#include <ogr_geometry.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

const AxisNames& NamesOf(CoordinateKind kind, bool gon) {
  return gon ? UsualGonNames() : UsualAxisNames(kind);
}

// "n" and 2 of "n_2"; 1 where there is no number.
std::pair<std::string, int> WithoutNumber(const std::string& name) {
  const std::size_t mark = name.rfind('_');
  if (mark == std::string::npos) return {name, 1};
  int number = 0;
  const char* end = name.data() + name.size();
  const auto [rest, error] = std::from_chars(name.data() + mark + 1, end, number);
  if (error != std::errc() || rest != end || number < 2) return {name, 1};
  return {name.substr(0, mark), number};
}

constexpr double kDegreesPerGon = 0.9;
constexpr double kNoHeightGiven = std::numeric_limits<double>::quiet_NaN();

// Beyond the Moon: a slip, not a coordinate.
constexpr double kFarthest = 1e9;  // metres

std::string LengthProblem(double metres) {
  if (std::abs(metres) <= kFarthest) return {};
  return fmt::format("{:.3g} m is outside -{:.0e} to {:.0e} m", metres, kFarthest, kFarthest);
}

bool IsNumeric(OGRFieldType type) {
  return type == OFTReal || type == OFTInteger || type == OFTInteger64;
}

// Columns that together are a point: all with the same number behind their names.
struct CoordinateSet {
  int number;
  std::array<std::vector<std::size_t>, 3> columns;  // all that could be meant, for each axis

  bool IsWhole(std::size_t needed) const {
    return std::none_of(columns.begin(), columns.begin() + static_cast<std::ptrdiff_t>(needed),
                        [](const auto& some) { return some.empty(); });
  }
};

CoordinateSet FindSet(const std::vector<std::string>& columns, const AxisNames& names, int wanted) {
  std::vector<std::string> bases(columns.size());  // empty for another number
  for (std::size_t i = 0; i < columns.size(); ++i) {
    auto [base, number] = WithoutNumber(columns[i]);
    if (number == wanted) bases[i] = std::move(base);
  }
  CoordinateSet set{wanted, {}};
  for (std::size_t axis = 0; axis < 3; ++axis) set.columns[axis] = FindUsual(bases, names[axis]);
  return set;
}

std::vector<CoordinateSet> FindSets(const std::vector<std::string>& columns, const AxisNames& names,
                                    std::size_t needed) {
  std::set<int> numbers;
  for (const std::string& column : columns) numbers.insert(WithoutNumber(column).second);
  std::vector<CoordinateSet> sets;
  for (const int number : numbers) {
    CoordinateSet set = FindSet(columns, names, number);
    if (set.IsWhole(needed)) sets.push_back(std::move(set));
  }
  return sets;
}

// The columns of that name, exactly or else but for letter case, blanks and underscores.
std::vector<std::size_t> FindColumns(const std::vector<std::string>& columns,
                                     const std::string& name) {
  std::vector<std::size_t> similar;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] == name) return {i};
    if (SameName(columns[i], name)) similar.push_back(i);
  }
  return similar;
}

void RefuseSeveral(const PointSource& source, const std::vector<std::string>& columns,
                   const std::vector<std::size_t>& found) {
  if (found.size() < 2) return;
  std::vector<std::string> names;
  for (const std::size_t column : found) names.push_back(columns[column]);
  throw UserError(fmt::format("{}: {} could each be meant; choose with --columns", source.Name(),
                              ListNames(names)));
}

// An attribute is stale when it is farther from the geometry than rounding explains: to 7 decimals
// of a degree, which are usual in GeoJSON, or to a centimetre.
constexpr double kRoundedDegrees = 2e-7, kRoundedMetres = 0.011;

// Whether the geometry is one of that kind; without a system of its layer, by its numbers.
bool IsOfKind(const OGRPoint& point, CoordinateKind kind) {
  const OGRSpatialReference* system = point.getSpatialReference();
  const bool likeDegrees = std::abs(point.getX()) <= 360 && std::abs(point.getY()) <= 90;
  const bool geographic = system ? system->IsGeographic() : likeDegrees;
  return geographic == (kind == CoordinateKind::geographic);
}

const OGRPoint* PointOf(const Record& record) {
  const OGRGeometry* geometry = record.feature ? record.feature->GetGeometryRef() : nullptr;
  const bool isPoint =
      geometry && wkbFlatten(geometry->getGeometryType()) == wkbPoint && !geometry->IsEmpty();
  return isPoint ? geometry->toPoint() : nullptr;
}

}  // namespace

PointColumns::PointColumns(const PointSource& source, CoordinateKind kind,
                           const ColumnChoice& choice)
    : kind_(kind),
      fixedHeight_(choice.fixedHeight),
      gon_(choice.gon && kind == CoordinateKind::geographic),
      decimalComma_(choice.decimalComma),
      heightOptional_(choice.heightOptional),
      source_(source) {
  const std::vector<std::string> columns = source.ColumnNames();
  if (choice.fromGeometry && !source.HasGeometry())
    throw UserError(source.Name() + ": has no geometry (--from-geometry)");
  if (choice.fromGeometry)
    fromGeometry_ = true;
  else if (!choice.names.empty())
    TakeChosen(columns, choice.names);
  else if (!TakeUsual(columns) && !TakeUsualWithoutHeight(columns)) {
    fromGeometry_ = source.HasGeometry();
    if (!fromGeometry_) RefuseMissing(columns);
  }
  if (!fromGeometry_ || choice.ignoreCrs) return;
  layerCrs_.emplace(
      source.Name(), source.Crs(),
      ExpectedCrs{kind == CoordinateKind::geographic, choice.crs, !fixedHeight_, choice.unit});
  note_ = layerCrs_->Note();
}

void PointColumns::Take(std::size_t axis, std::size_t column) {
  columns_[axis] = column;
  names_[axis] = source_.Columns()[column].name;
}

void PointColumns::TakeChosen(const std::vector<std::string>& columns,
                              const std::vector<std::string>& names) {
  for (std::size_t axis = 0; axis < names.size(); ++axis) {
    const std::vector<std::size_t> found = FindColumns(columns, names[axis]);
    if (found.empty())
      throw UserError(fmt::format("{}: there is no column \"{}\"; {}", source_.Name(),
                                  Printable(names[axis]), SuggestName(names[axis], columns)));
    RefuseSeveral(source_, columns, found);
    Take(axis, found.front());
  }
  if (names.size() >= Needed()) return;
  // Two names: the height is a usual one.
  const CoordinateSet usual = FindSet(columns, NamesOf(kind_, gon_), 1);
  withoutHeight_ = usual.columns[2].empty() && heightOptional_;
  if (withoutHeight_) return;
  if (usual.columns[2].empty()) RefuseMissing(columns);
  RefuseSeveral(source_, columns, usual.columns[2]);
  Take(2, usual.columns[2].front());
}

bool PointColumns::TakeUsual(const std::vector<std::string>& columns) {
  const auto sets = FindSets(columns, NamesOf(kind_, gon_), Needed());
  if (sets.empty()) return false;
  std::string choices;
  for (const CoordinateSet& set : sets) {
    std::string names;
    for (std::size_t axis = 0; axis < Needed(); ++axis) {
      RefuseSeveral(source_, columns, set.columns[axis]);
      names += (axis > 0 ? "," : "") + columns[set.columns[axis].front()];
    }
    choices += fmt::format("{}--columns {}", choices.empty() ? "" : " or ", names);
  }
  if (sets.size() > 1)
    throw UserError(fmt::format("{}: several columns could be the coordinates; choose with {}",
                                source_.Name(), choices));
  for (std::size_t axis = 0; axis < Needed(); ++axis)
    Take(axis, sets.front().columns[axis].front());
  if (sets.front().number > 1)
    note_ = fmt::format("{}: coordinates are taken from {}", source_.Name(),
                        ListNames({names_.data(), Needed()}));
  return true;
}

bool PointColumns::TakeUsualWithoutHeight(const std::vector<std::string>& columns) {
  if (!heightOptional_) return false;
  withoutHeight_ = true;
  withoutHeight_ = TakeUsual(columns);
  return withoutHeight_;
}

// Of a column, as messages and --columns call it.
const char* PointColumns::TitleOf(std::size_t axis) const {
  constexpr const char* titles[][3] = {{"lat", "lon", "h"}, {"n", "e", "h"}, {"x", "y", "z"}};
  return titles[static_cast<std::size_t>(kind_)][axis];
}

void PointColumns::RefuseMissing(const std::vector<std::string>& columns) const {
  const bool geographic = kind_ == CoordinateKind::geographic;
  const AxisNames& usual = NamesOf(kind_, gon_);
  const auto set = FindSet(columns, usual, 1);
  const auto x = FindColumns(columns, "x"), y = FindColumns(columns, "y");
  if (kind_ == CoordinateKind::grid && x.size() == 1 && y.size() == 1 && set.columns[0].empty())
    throw UserError(fmt::format(
        "{0}: \"{1}\" is north in some countries and east in others; say --columns {1},{2},H when "
        "{1} is north, --columns {2},{1},H when {2} is (without header: call them n and e)",
        source_.Name(), columns[x.front()], columns[y.front()]));
  std::size_t axis = 0;
  while (axis < 2 && !set.columns[axis].empty()) ++axis;
  const std::string missing =
      gon_ && axis < 2 ? fmt::format("{}_gon", TitleOf(axis)) : TitleOf(axis);
  throw UserError(
      fmt::format("{}: there is no column \"{}\"; {}. Choose the columns with --columns {}{}",
                  source_.Name(), missing, SuggestName(missing, columns),
                  geographic                      ? "LAT,LON,H"
                  : kind_ == CoordinateKind::grid ? "N,E,H"
                                                  : "X,Y,Z",
                  columns.size() > 1 && kind_ != CoordinateKind::geocentric
                      ? ", or give all points one height with --fixed-height METRES"
                      : ""));
}

std::string PointColumns::CheckRange(std::size_t axis, double value) const {
  if (!std::isfinite(value)) return "is not a finite number";
  if (!IsAngle(axis)) return LengthProblem(value);
  return AngleRangeProblem(value, axis == 0 ? AngleKind::latitude : AngleKind::longitude);
}

std::string PointColumns::ReadColumn(const Record& record, std::size_t axis, NumberReader& numbers,
                                     double& value) const {
  const std::size_t column = columns_[axis];
  const double unit = gon_ && IsAngle(axis) ? kDegreesPerGon : 1;
  if (record.feature) {
    const int field = static_cast<int>(column);
    if (IsNumeric(record.feature->GetFieldDefnRef(field)->GetType()) &&
        record.feature->IsFieldSetAndNotNull(field)) {
      value = record.feature->GetFieldAsDouble(field) * unit;
      return CheckRange(axis, value);
    }
  }
  std::string room;
  const std::string_view text = record.Text(column, room);
  const ParsedNumber number =
      gon_ || !IsAngle(axis)
          ? numbers.Number(text)
          : numbers.Angle(text, axis == 0 ? AngleKind::latitude : AngleKind::longitude);
  value = number.value * unit;
  return number ? CheckRange(axis, value) : number.problem;
}

bool PointColumns::LacksHeight(const Record& record) const {
  if (withoutHeight_ || !heightOptional_) return withoutHeight_;
  std::string room;
  return Trim(record.Text(columns_[2], room)).empty();
}

std::string PointColumns::ReadGeometry(const Record& record, std::array<double, 3>& point) const {
  const OGRPoint* given = PointOf(record);
  if (kind_ == CoordinateKind::geocentric) return "a point geometry is not geocentric";
  if (!given) return "the feature has no point geometry";
  const bool hasHeight = fixedHeight_ || given->Is3D();
  if (!hasHeight && !heightOptional_)
    return "the point has no height (--fixed-height METRES gives all points one)";
  point = {given->getY(), given->getX(), fixedHeight_.value_or(given->getZ())};
  if (layerCrs_ && !layerCrs_->Convert(point))
    return "the point cannot be converted to the expected coordinate system";
  constexpr const char* names[] = {"y", "x", "z"};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (const std::string problem = CheckRange(axis, point[axis]); !problem.empty())
      return fmt::format("{} of the point {}", names[axis], problem);
  }
  if (!hasHeight) point[2] = kNoHeightGiven;
  return {};
}

void PointColumns::CompareGeometry(const Record& record, const std::array<double, 3>& point,
                                   PointsRead& read) const {
  const OGRPoint* drawn = PointOf(record);
  if (!drawn || kind_ == CoordinateKind::geocentric || !IsOfKind(*drawn, kind_)) return;
  const double rounded = IsAngle(0) ? kRoundedDegrees : kRoundedMetres;
  const double turns = IsAngle(0) ? 360 : HUGE_VAL;
  const bool same = std::abs(drawn->getY() - point[0]) <= rounded &&
                    std::abs(std::remainder(drawn->getX() - point[1], turns)) <= rounded &&
                    (fixedHeight_ || std::isnan(point[2]) || !drawn->Is3D() ||
                     std::abs(drawn->getZ() - point[2]) <= kRoundedMetres);
  if (!same && read.stale++ == 0) read.firstStale = source_.Place(record);
}

std::string PointColumns::StaleNote(const PointsRead& read) const {
  if (read.stale == 0) return {};
  return fmt::format(
      "{}, {}{}: {} say something else than the geometry, which may have been moved since; the "
      "columns were taken (--from-geometry takes the geometry)",
      source_.Name(), read.firstStale,
      read.stale > 1 ? fmt::format(" and {} more", read.stale - 1) : "",
      ListNames({names_.data(), Needed()}));
}

std::string PointColumns::Read(const Record& record, PointsRead& read,
                               std::array<double, 3>& point) const {
  if (fromGeometry_) return ReadGeometry(record, point);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (axis == 2 && fixedHeight_) {
      point[2] = *fixedHeight_;
      continue;
    }
    if (axis == 2 && LacksHeight(record)) {
      point[2] = kNoHeightGiven;
      continue;
    }
    const std::string problem = ReadColumn(record, axis, read.numbers, point[axis]);
    if (!problem.empty()) return names_[axis] + " " + problem;
  }
  CompareGeometry(record, point, read);
  return {};
}

}  // namespace geomath_files
