#include <array>
#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>

#include "files/site/site_solution.h"
#include "files/system/system_sections.h"
#include "files/words/name_match.h"
#include "geomath/base/angle.h"
#include "js/bindings/objects.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_files {

// Control points come without accuracies.
void SiteSolution::TakeCovariances(CoordinateChain&, const AxisPair&, double) {
  gridCovariances_.resize(control_.size());
}

}  // namespace geomath_files

namespace geomath_js {
namespace {

constexpr const char* kNorthEast = "NE";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
using Row = std::array<double, 3>;  // northing, easting, height

/// Control points with their solution.
class CalibrationObject : public Object {
 public:
  CalibrationObject(std::shared_ptr<ChainObject> on, std::vector<ControlPoint> control,
                    const CalibrationOptions& options);
  void Convert(int, const Block&) const override {}
  json Describe() const override;
  /// The chain of the calibration with the site at its end.
  std::shared_ptr<ChainObject> WholeChain() const;

 private:
  const Ellipsoid& OnEllipsoid() const {
    return chain_->datum ? chain_->datum->ellipsoid->ellipsoid : chain_->global->ellipsoid;
  }
  json TableOf(const std::function<Row(std::size_t)>& values) const;

  std::shared_ptr<ChainObject> chain_;
  std::optional<SiteSolution> solution_;
};

CalibrationObject::CalibrationObject(std::shared_ptr<ChainObject> on,
                                     std::vector<ControlPoint> control,
                                     const CalibrationOptions& options)
    : chain_(std::move(on)) {
  if (!chain_->global) chain_->global = EllipsoidAt({});
  SiteFrame frame{chain_->chain, nullptr, OnEllipsoid(), {}, {}};
  if (const auto& given = chain_->projection) {
    frame.projection =
        geomath_files::MakeProjection(given->kind, given->a, given->invF, given->values);
    frame.geographic = AxisPairOf(given->geographicAxes);
    frame.grid = AxisPairOf(given->gridAxes);
  }
  const GridUnits units{{"", chain_->unit}, {"", chain_->heightUnit}};
  for (ControlPoint& point : control)
    for (std::size_t c = 0; c < std::size(kControlColumns); ++c)
      if (const auto value = GetControl(point.given, c))
        SetControl(point.given, c, *value * UnitOfControl(c, units).metres);
  solution_.emplace(std::move(frame), control, options);
}

// Null where there is nothing to say.
json NumberOrNull(double value) {
  return std::isfinite(value) && std::abs(value) != DBL_MAX ? json(value) : json();
}

json CalibrationObject::TableOf(const std::function<Row(std::size_t)>& values) const {
  json table = json::array();
  for (std::size_t i = 0; i < solution_->Points().size(); ++i) {
    json row = json::array();
    for (const double value : values(i)) row.push_back(NumberOrNull(value));
    table.push_back(row);
  }
  return table;
}

json CalibrationObject::Describe() const {
  const auto& points = solution_->Points();
  const CalibrationCheck& check = solution_->Check();
  const TLocalizationParam& solver = solution_->Solver();
  json names = json::array(), horizontal = json::array(), vertical = json::array();
  for (std::size_t i = 0; i < points.size(); ++i) {
    names.push_back(solution_->NameOf(i));
    horizontal.push_back(solver.UseForHorParams(static_cast<int>(i)));
    vertical.push_back(solver.UseForVertParams(static_cast<int>(i)));
  }
  const CalibrationDeviations& d = check.Deviations();
  const double values[] = {d.tN, d.tE, d.scale, d.rotation * kDegPerRad, d.h0, d.aN, d.aE};
  json deviations;
  for (std::size_t i = 0; i < std::size(values); ++i)
    deviations[kLocalizationKeys[i]] = NumberOrNull(values[i]);
  const auto indexOrNull = [](int index) { return index < 0 ? json() : json(index); };
  json described = json::object();
  described["names"] = names;
  described["horizontal"] = horizontal;
  described["vertical"] = vertical;
  described["residuals"] = TableOf([&](std::size_t i) {
    return Row{points[i].residualN, points[i].residualE, points[i].residualH};
  });
  described["standardised"] = TableOf([&](std::size_t i) {
    const PointCheck& c = check.Points()[i];
    return Row{c.standardN, c.standardE, c.standardH};
  });
  described["predicted"] = TableOf([&](std::size_t i) {
    const PointCheck& c = check.Points()[i];
    return Row{c.predictedN, c.predictedE, c.predictedH};
  });
  described["rms"] = NumberOrNull(solution_->Rms().value_or(kNaN));
  described["horizontalSigma"] = NumberOrNull(check.HorizontalSigma());
  described["verticalSigma"] = NumberOrNull(check.VerticalSigma());
  described["deviations"] = deviations;
  described["worstHorizontal"] = indexOrNull(check.WorstHorizontal());
  described["worstVertical"] = indexOrNull(check.WorstVertical());
  described["localization"] = SiteObject(solution_->Site()).Describe();
  described["warnings"] = solution_->Warnings();
  return described;
}

std::shared_ptr<ChainObject> CalibrationObject::WholeChain() const {
  auto chain = std::make_shared<ChainObject>();
  chain->TakeParts(*chain_);
  chain->localization = std::make_shared<SiteObject>(solution_->Site());
  if (!chain->projection)
    chain->projection = std::make_shared<ProjectionObject>(
        *FindProjection(kOwnProjection), OwnProjectionValues(*solution_), OnEllipsoid().a,
        OnEllipsoid().invF, kNorthEast, kNorthEast);
  chain->Join();
  return chain;
}

std::string TextOf(const json& item) {
  return item.is_string() ? item.get<std::string>() : item.dump();
}

std::vector<ControlPoint> ControlOf(const json& columns) {
  const auto lengthOf = [&](const std::string& name) {
    return columns.contains(name) ? columns.at(name).size() : 0;
  };
  for (const char* needed : {"lat", "lon", "local_n", "local_e"})
    if (!columns.contains(CamelName(needed)))
      throw UserError("Calibration: there is no column \"" + CamelName(needed) + '"');
  std::vector<ControlPoint> points(lengthOf("lat"));
  for (const auto& [name, column] : columns.items())
    if (column.size() != points.size())
      throw UserError("Calibration: \"" + name + "\" has " + std::to_string(column.size()) +
                      " values, \"lat\" has " + std::to_string(points.size()));
  for (std::size_t i = 0; i < points.size(); ++i) {
    ControlPoint& point = points[i];
    point.given = NewControl();
    for (std::size_t c = 0; c < std::size(kControlColumns); ++c) {
      const std::string name = CamelName(kControlColumns[c]);
      if (!columns.contains(name) || columns[name][i].is_null()) continue;
      if (!columns[name][i].is_number())
        throw UserError("Calibration: \"" + name + "\" has a value that is no number");
      SetControl(point.given, c, columns[name][i].get<double>());
    }
    const bool named = columns.contains("name") && !columns["name"][i].is_null();
    point.name = named ? TextOf(columns["name"][i]) : std::to_string(i + 1);
    constexpr AngleKind kKinds[] = {AngleKind::latitude, AngleKind::longitude};
    for (std::size_t c = 0; c < std::size(kKinds); ++c)
      if (const auto degrees = GetControl(point.given, c);
          degrees && std::abs(*degrees) > LargestAngle(kKinds[c]))
        throw UserError("point " + point.name + ": " + kControlColumns[c] + " is out of range");
    point.given.use = WholeUse(point.given);
    if (!columns.contains("use") || columns["use"][i].is_null()) continue;
    const auto use = PointUseOf(TextOf(columns["use"][i]));
    if (!use)
      throw UserError("point " + point.name + ": use is a code from 0 to 4 or one of " +
                      ListNames(PointUseWords()));
    point.given.use = *use;
  }
  return points;
}

}  // namespace

std::shared_ptr<Object> MakeCalibration(const json& given) {
  auto chain = std::make_shared<ChainObject>();
  if (const auto on = PartAt<ChainObject>(given, "chain")) chain->TakeParts(*on);
  if (!chain->global) chain->global = EllipsoidAt({});
  chain->Join();
  CalibrationOptions options;
  options.fixedScale = given.value("fixedScale", false);
  options.centreOnFirst = given.value("centreOnFirst", false);
  return std::make_shared<CalibrationObject>(std::move(chain), ControlOf(given.at("control")),
                                             options);
}

std::shared_ptr<Object> MakeCalibrationChain(const json& given) {
  return PartAt<CalibrationObject>(given, "calibration")->WholeChain();
}

}  // namespace geomath_js
