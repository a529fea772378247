#include <fmt/format.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cfloat>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/site/site_solution.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "python/bindings/adjustment.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_python {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Control points, how they are to be solved, and the chain that carries them to the grid.
struct CalibrationObject {
  std::vector<ControlPoint> control;
  std::shared_ptr<ChainObject> chain;
  CalibrationOptions options;
};

struct SolutionObject {
  explicit SolutionObject(std::shared_ptr<CalibrationObject> of);

  std::shared_ptr<CalibrationObject> calibration;
  std::optional<SiteSolution> solution;
};

}  // namespace

template <>
inline constexpr bool kBound<CalibrationObject> = true;
template <>
inline constexpr bool kBound<SolutionObject> = true;

namespace {

Ellipsoid EllipsoidOf(const ChainObject& chain) {
  if (chain.datum) return *chain.datum->ellipsoid;
  return chain.global ? *chain.global : MakeEllipsoid(kWgs84A, kWgs84InvF);
}

// Names of the columns of a mapping, a data frame or a structured array.
std::vector<std::string> ColumnNames(const py::object& control) {
  const bool structured =
      py::hasattr(control, "dtype") && py::hasattr(control.attr("dtype"), "names");
  if (!structured && !py::hasattr(control, "keys"))
    throw py::type_error(
        "control: must have columns by name, as a dict, a data frame or a structured array");
  const py::object names =
      structured ? control.attr("dtype").attr("names") : control.attr("keys")();
  std::vector<std::string> columns;
  if (!names.is_none())
    for (const py::handle& name : names) columns.emplace_back(py::str(name));
  return columns;
}

class ControlReader {
 public:
  explicit ControlReader(const py::object& control)
      : control_(control), names_(ColumnNames(control)) {}

  std::vector<ControlPoint> Read() {
    for (const char* needed : {"lat", "lon", "local_n", "local_e"})
      if (!Has(needed))
        throw UserError(fmt::format("control: there is no column \"{}\"; {}", needed,
                                    SuggestName(needed, names_)));
    points_.resize(Column("lat").size());
    for (ControlPoint& point : points_) point.given = NewControl();
    for (std::size_t c = 0; c < std::size(kControlColumns); ++c)
      if (Has(kControlColumns[c])) TakeCoordinate(c);
    TakeNames();
    TakeAccuracies();
    TakeUses();
    CheckPositions();
    return std::move(points_);
  }

 private:
  bool Has(const char* name) const {
    return std::find(names_.begin(), names_.end(), name) != names_.end();
  }

  py::object At(const char* name) const { return control_[name]; }

  std::vector<double> Column(const char* name) const {
    ArrayReader reader({name, At(name)});
    const Shape shape = reader.GetShape();
    if (shape.size() != 1)
      throw UserError(fmt::format("control: \"{}\" must be a one-dimensional column", name));
    reader.Start(shape);
    std::vector<double> column(static_cast<std::size_t>(shape[0]));
    reader.Read(column.data(), column.size());
    return column;
  }

  void TakeCoordinate(std::size_t c) {
    const std::vector<double> column = Column(kControlColumns[c]);
    RequireLength(kControlColumns[c], column.size());
    for (std::size_t i = 0; i < column.size(); ++i)
      if (!std::isnan(column[i])) SetControl(points_[i].given, c, column[i]);
  }

  void RequireLength(const char* name, std::size_t length) const {
    if (length != points_.size())
      throw UserError(fmt::format("control: \"{}\" has {} values, \"lat\" has {}", name, length,
                                  points_.size()));
  }

  // Nothing for what is missing. A column of codes that misses some has become one of real numbers.
  static std::optional<std::string> TextOfItem(const py::handle& item) {
    const bool real = PyFloat_Check(item.ptr());
    if (item.is_none() || (real && std::isnan(item.cast<double>())) ||
        std::string_view(Py_TYPE(item.ptr())->tp_name).ends_with("NAType"))
      return {};
    if (real && item.attr("is_integer")().cast<bool>())
      return std::string(py::str(item.attr("__int__")()));
    return std::string(py::str(item));
  }

  std::vector<std::optional<std::string>> Texts(const char* name) const {
    std::vector<std::optional<std::string>> texts;
    for (const py::handle& item : At(name)) texts.push_back(TextOfItem(item));
    RequireLength(name, texts.size());
    return texts;
  }

  void CheckPositions() const {
    constexpr AngleKind kAngles[] = {AngleKind::latitude, AngleKind::longitude};
    for (const ControlPoint& point : points_)
      for (std::size_t c = 0; c < std::size(kAngles); ++c)
        if (const auto degrees = GetControl(point.given, c))
          RequireAngle(fmt::format("point {}: {}", point.name, kControlColumns[c]), *degrees,
                       kAngles[c]);
  }

  void TakeAccuracies() {
    for (std::size_t c = 0; c < std::size(kAccuracyColumns); ++c) {
      const char* const name = kAccuracyColumns[c];
      if (!Has(name)) continue;
      const std::vector<double> column = Column(name);
      RequireLength(name, column.size());
      for (std::size_t i = 0; i < column.size(); ++i) {
        if (!std::isnan(column[i])) points_[i].accuracy[c] = column[i];
      }
    }
    for (const ControlPoint& point : points_)
      if (const std::string problem = AccuracyProblem(point); !problem.empty())
        throw UserError(fmt::format("point {}: {}", point.name, problem));
  }

  void TakeNames() {
    for (std::size_t i = 0; i < points_.size(); ++i) points_[i].name = std::to_string(i + 1);
    if (!Has("name")) return;
    const auto names = Texts("name");
    for (std::size_t i = 0; i < points_.size(); ++i)
      if (names[i]) points_[i].name = *names[i];
  }

  void TakeUses() {
    for (ControlPoint& point : points_) point.given.use = WholeUse(point.given);
    if (!Has("use")) return;
    const auto uses = Texts("use");
    for (std::size_t i = 0; i < points_.size(); ++i) {
      if (!uses[i]) continue;
      const auto use = PointUseOf(*uses[i]);
      if (!use)
        throw UserError(
            fmt::format("point {}: use is \"{}\"; it is a code from 0 to 4 or one of {}",
                        points_[i].name, Printable(*uses[i]), ListNames(PointUseWords())));
      points_[i].given.use = *use;
    }
  }

  py::object control_;
  std::vector<std::string> names_;
  std::vector<ControlPoint> points_;
};

std::shared_ptr<CalibrationObject> Make(const py::object& control,
                                        std::shared_ptr<ChainObject> chain, bool fixedScale,
                                        bool centreOnFirst) {
  if (!chain) chain = std::make_shared<ChainObject>();
  return std::make_shared<CalibrationObject>(CalibrationObject{
      ControlReader(control).Read(), std::move(chain), {fixedScale, centreOnFirst}});
}

// What a calibration was made of, as its constructor takes it.
py::tuple StateOf(const CalibrationObject& object) {
  py::dict columns;
  const auto column = [&](const auto& value) {
    std::vector<double> values;
    for (const ControlPoint& point : object.control) values.push_back(value(point.given));
    return ArrayOf(values);
  };
  std::size_t index = 0;
  for (const char* name : kControlColumns) {
    columns[name] =
        column([&](const IdenticalPoint& p) { return GetControl(p, index).value_or(kNaN); });
    ++index;
  }
  for (std::size_t c = 0; c < std::size(kAccuracyColumns); ++c) {
    std::vector<double> values;
    for (const ControlPoint& point : object.control)
      values.push_back(point.accuracy[c].value_or(kNaN));
    columns[kAccuracyColumns[c]] = ArrayOf(values);
  }
  py::list names, uses;
  for (const ControlPoint& point : object.control) {
    names.append(point.name);
    uses.append(point.given.use);
  }
  columns["name"] = names;
  columns["use"] = uses;
  return py::make_tuple(columns, object.chain, object.options.fixedScale,
                        object.options.centreOnFirst);
}

std::shared_ptr<CalibrationObject> FromState(const py::tuple& s) {
  return Make(s[0], s[1].cast<std::shared_ptr<ChainObject>>(), s[2].cast<bool>(),
              s[3].cast<bool>());
}

std::shared_ptr<SolutionObject> SolutionFromState(const py::tuple& state) {
  return std::make_shared<SolutionObject>(PartOf<CalibrationObject>(state[0]));
}

// A table with a row for each point and the columns north, east and height.
template <class Values>
py::array_t<double> TableOf(const SolutionObject& object, Values values) {
  const std::vector<IdenticalPoint>& points = object.solution->Points();
  py::array_t<double> table({static_cast<py::ssize_t>(points.size()), py::ssize_t{3}});
  double* row = table.mutable_data();
  for (std::size_t i = 0; i < points.size(); ++i, row += 3) {
    const std::array<double, 3> v = values(i);
    std::copy(v.begin(), v.end(), row);
    for (double* value = row; value != row + 3; ++value)
      if (std::abs(*value) == DBL_MAX) *value = kNaN;
  }
  return table;
}

py::array_t<double> Residuals(const SolutionObject& object) {
  return TableOf(object, [&](std::size_t i) -> std::array<double, 3> {
    const IdenticalPoint& p = object.solution->Points()[i];
    return {p.residualN, p.residualE, p.residualH};
  });
}

py::array_t<double> Standardised(const SolutionObject& object) {
  return TableOf(object, [&](std::size_t i) -> std::array<double, 3> {
    const PointCheck& c = object.solution->Check().Points()[i];
    return {c.standardN, c.standardE, c.standardH};
  });
}

py::array_t<double> Predicted(const SolutionObject& object) {
  return TableOf(object, [&](std::size_t i) -> std::array<double, 3> {
    const PointCheck& c = object.solution->Check().Points()[i];
    return {c.predictedN, c.predictedE, c.predictedH};
  });
}

using Used = bool (TLocalizationParam::*)(int) const;

template <Used used>
py::array_t<bool> UsedPoints(const SolutionObject& object) {
  const auto count = static_cast<py::ssize_t>(object.solution->Points().size());
  py::array_t<bool> mask(count);
  for (py::ssize_t i = 0; i < count; ++i)
    mask.mutable_at(i) = (object.solution->Solver().*used)(static_cast<int>(i));
  return mask;
}

py::dict Deviations(const SolutionObject& object) {
  const CalibrationDeviations& d = object.solution->Check().Deviations();
  const double values[] = {d.tN, d.tE, d.scale, d.rotation * kDegPerRad, d.h0, d.aN, d.aE};
  py::dict deviations;
  for (std::size_t i = 0; i < std::size(values); ++i)
    deviations[py::str(SnakeName(kLocalizationKeys[i]))] = values[i];
  return deviations;
}

double Rms(const SolutionObject& object) { return object.solution->Rms().value_or(kNaN); }

py::object IndexOrNone(int index) { return index < 0 ? py::object(py::none()) : py::int_(index); }

std::vector<std::string> Warnings(const SolutionObject& object) {
  return object.solution->Warnings();
}

// The chain of the calibration with the site at its end.
std::shared_ptr<ChainObject> ChainOf(const SolutionObject& object) {
  auto chain = std::make_shared<ChainObject>(*object.calibration->chain);
  const SiteSolution& solution = *object.solution;
  chain->siteErrors.parts = solution.Check().Covariance(chain->siteErrors.covariance);
  chain->localization = std::make_shared<LocalToGrid>(object.solution->Site());
  if (!chain->projection) {
    const Ellipsoid on = EllipsoidOf(*chain);
    chain->projection = std::make_shared<ProjectionObject>(*FindProjection(kOwnProjection),
                                                           OwnProjectionValues(*object.solution),
                                                           on.a, on.invF, kNorthEast, kNorthEast);
  }
  Join(*chain);
  return chain;
}

}  // namespace

SolutionObject::SolutionObject(std::shared_ptr<CalibrationObject> of) : calibration(std::move(of)) {
  const ChainObject& chain = *calibration->chain;
  const Ellipsoid ellipsoid = EllipsoidOf(chain);
  SiteFrame frame{chain.chain, nullptr, ellipsoid, {}, {}, chain.date};
  if (const auto& given = chain.projection) {
    frame.projection = MakeProjection(given->kind, given->a, given->invF, given->values);
    frame.geographic = AxisPairOf(given->geographicAxes);
    frame.grid = AxisPairOf(given->gridAxes);
  }
  CalibrationOptions options = calibration->options;
  Pace pace;
  options.onPoint = [&pace] { pace.Done(); };
  std::vector<ControlPoint> control = calibration->control;
  const GridUnits units{{"", chain.unit}, {"", chain.heightUnit}};
  for (ControlPoint& point : control)
    for (std::size_t c = 0; c < std::size(kControlColumns); ++c)
      if (const auto value = GetControl(point.given, c))
        SetControl(point.given, c, *value * UnitOfControl(c, units).metres);
  solution.emplace(std::move(frame), control, options);
}

void BindCalibration(py::module_& module) {
  py::class_<CalibrationObject, std::shared_ptr<CalibrationObject>> calibration(module,
                                                                                "Calibration", R"(
Control points of a site, to be solved for a LocalToGrid.

    result = Calibration({"lat": lat, "lon": lon, "h": h,
                          "local_n": n, "local_e": e, "local_h": z}, chain).solve()

control: columns of equal length by name, in a dict, a data frame or a structured array. lat, lon, h:
global position, degrees and metres; local_n, local_e, local_h: local coordinates, in the units of
the chain; NaN (or what a data frame has for missing values) is a coordinate that the point does not have, and h and
local_h may be left out. name: a text for each
point. sigma_n, sigma_e, sigma_h: standard deviations, metres, for CalibrationResult.adjust. use: "none", "vertical", "horizontal", "both", "rotation" or the codes 0 to 4; without it a
point is used for what it has. chain carries the points to the grid; without one, or without a
projection in it, the site gets a stereographic projection of its own, at the centre of the control's
extent (centre_on_first: at the first control point). fixed_scale keeps the scale at 1.

Immutable, can be pickled. Raises Error for columns that are missing or do not go together.)");
  calibration.attr("__module__") = "geomath";
  calibration
      .def(py::init(&Make), py::arg("control"), py::arg("chain") = py::none(), py::kw_only(),
           py::arg("fixed_scale") = false, py::arg("centre_on_first") = false)
      .def(
          "solve",
          [](std::shared_ptr<CalibrationObject> object) {
            const py::gil_scoped_release unlocked;
            return std::make_shared<SolutionObject>(std::move(object));
          },
          R"(solve(self)
--

The CalibrationResult. The rotation fits the directions from the centroid, the scale is the mean of
the distance ratios, the shifts carry one centroid to the other; three and more heights give an
inclined plane, one or two a mean shift.

Time grows with the square of the number of points, since each is left out once: 1000 take a tenth of a
second, 10,000 some seconds. Ctrl-C ends it.

Raises Error when a point cannot be converted to the grid, or the points do not suffice.)")
      .def("__repr__", [](const CalibrationObject& object) {
        return fmt::format("<Calibration of {} control points>", object.control.size());
      });
  DefinePickle(calibration, &StateOf, &FromState);

  py::class_<SolutionObject, std::shared_ptr<SolutionObject>> result(module, "CalibrationResult",
                                                                     R"(
A solved site calibration and what is to be said of it; made by Calibration.solve.

Tables have a row for each control point and the columns north, east and height; NaN where there is
nothing to say. Immutable; a pickle holds the control and solves it again.)");
  result.attr("__module__") = "geomath";
  result
      .def_property_readonly(
          "localization",
          [](const SolutionObject& r) { return std::make_shared<LocalToGrid>(r.solution->Site()); },
          "The parameters of the site, as a LocalToGrid.")
      .def(
          "adjust",
          [](const SolutionObject& r, const std::string& model, const std::string& heights,
             bool sigmaKnown, const std::array<double, 3>& common, bool robust) {
            const py::gil_scoped_release unlocked;
            return Adjust(*r.solution, model, heights, sigmaKnown, common, robust);
          },
          py::kw_only(), py::arg("model") = "similarity", py::arg("heights") = "plane",
          py::arg("sigma_known") = false, py::arg("common") = std::array<double, 3>{0, 0, 0},
          py::arg("robust") = false,
          R"(adjust(self, *, model="similarity", heights="plane", sigma_known=False, common=(0, 0, 0), robust=False)
--

The same control solved by least squares and judged, a SiteAdjustment.

model: "rigid" (3 parameters), "similarity" (4), "affine" (6), "spatial" (7, with the heights) or
"none"; heights: "plane", "shift" or "none". Standard deviations of the control (columns sigma_n,
sigma_e, sigma_h, metres) are weights; sigma_known takes them at their word. common: standard deviations
north, east and up of an error that all points share, metres. robust gives outliers less weight.

Raises Error when the points do not determine the model.)")
      .def_property_readonly("chain", &ChainOf, "The whole conversion, with the site at its end.")
      .def_property_readonly(
          "names",
          [](const SolutionObject& r) {
            std::vector<std::string> names;
            for (const ControlPoint& point : r.calibration->control) names.push_back(point.name);
            return names;
          },
          "The names of the control points.")
      .def_property_readonly("horizontal", &UsedPoints<&TLocalizationParam::UseForHorParams>,
                             "Which points are used horizontally.")
      .def_property_readonly("vertical", &UsedPoints<&TLocalizationParam::UseForVertParams>,
                             "Which points are used for the heights.")
      .def_property_readonly("residuals", &Residuals, "Given minus computed, metres.")
      .def_property_readonly("standardised", &Standardised,
                             "Residuals over their standard deviations; beyond 3.29 suspicious.")
      .def_property_readonly("predicted", &Predicted,
                             "Given minus computed from a calibration on all other points, metres.")
      .def_property_readonly("rms", &Rms, "Root mean square of the horizontal residuals, metres.")
      .def_property_readonly(
          "horizontal_sigma",
          [](const SolutionObject& r) { return r.solution->Check().HorizontalSigma(); },
          "Standard deviation of one local coordinate, metres; NaN without redundancy.")
      .def_property_readonly(
          "vertical_sigma",
          [](const SolutionObject& r) { return r.solution->Check().VerticalSigma(); },
          "Standard deviation of one local height, metres; NaN without redundancy.")
      .def_property_readonly(
          "deviations", &Deviations,
          "Standard deviations of the parameters: metres, degrees, metres a metre.")
      .def_property_readonly(
          "worst_horizontal",
          [](const SolutionObject& r) {
            return IndexOrNone(r.solution->Check().WorstHorizontal());
          },
          "Index of the point that the others predict worst horizontally, or None.")
      .def_property_readonly(
          "worst_vertical",
          [](const SolutionObject& r) { return IndexOrNone(r.solution->Check().WorstVertical()); },
          "Index of the point that the others predict worst in height, or None.")
      .def_property_readonly("warnings", &Warnings,
                             "What is weak about the calibration, a sentence each.")
      .def("__repr__", [](const SolutionObject& r) {
        return fmt::format("<CalibrationResult of {} control points, rms {:.4f} m>",
                           r.calibration->control.size(), Rms(r));
      });
  DefinePickle(
      result, [](const SolutionObject& r) { return py::make_tuple(r.calibration); },
      &SolutionFromState);
}

}  // namespace geomath_python
