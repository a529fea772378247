#include "python/bindings/adjustment.h"

#include <fmt/format.h>
#include <pybind11/stl.h>

#include <array>
#include <limits>
#include <memory>
#include <string>

#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/adjust/site_adjustment.h"
#include "geomath/base/angle.h"
#include "python/bindings/columns.h"

using namespace zel_cs::geomath;
using geomath_files::UserError;

namespace geomath_python {
namespace {

template <class Value>
struct Named {
  const char* name;
  Value value;
};
constexpr Named<SiteModel> kModels[] = {{"rigid", SiteModel::rigid},
                                        {"similarity", SiteModel::similarity},
                                        {"affine", SiteModel::affine},
                                        {"spatial", SiteModel::spatial},
                                        {"none", SiteModel::none}};
constexpr Named<HeightModel> kHeights[] = {
    {"none", HeightModel::none}, {"shift", HeightModel::shift}, {"plane", HeightModel::plane}};

template <class Value, std::size_t N>
Value ByName(const Named<Value> (&rows)[N], const std::string& what, const std::string& name) {
  std::vector<std::string> known;
  for (const auto& row : rows) {
    if (row.name == name) return row.value;
    known.emplace_back(row.name);
  }
  throw UserError(fmt::format("{} is \"{}\"; {}", what, geomath_files::Printable(name),
                              geomath_files::SuggestName(name, known)));
}

const char* NameOf(SiteModel model) {
  for (const auto& row : kModels)
    if (row.value == model) return row.name;
  return "none";
}

// A row for each point, the columns north, east and height.
template <double AdjustedCoordinate::*value>
py::array_t<double> Table(const SiteAdjustment& a) {
  py::array_t<double> table({static_cast<py::ssize_t>(a.Points().size()), py::ssize_t{3}});
  double* to = table.mutable_data();
  for (std::size_t i = 0; i < a.Points().size(); ++i)
    for (int c = 0; c < 3; ++c) *to++ = a.At(i, c).*value;
  return table;
}

py::object Predict(const SiteAdjustment& a, py::object north, py::object east, py::object h,
                   double probability, double observed) {
  const std::array<Argument, 3> arguments = {{{"north", north}, {"east", east}, {"h", h}}};
  std::vector<ArrayReader> readers(arguments.begin(), arguments.end());
  const Shape shape = BroadcastShape(arguments, readers);
  Shape vectors = shape, matrices = shape;
  vectors.push_back(3);
  matrices.insert(matrices.end(), {3, 3});
  py::array_t<double> local(vectors), covariance(matrices), halfWidth(vectors), radius(shape);
  for (ArrayReader& reader : readers) reader.Start(shape);
  double* const to[] = {local.mutable_data(), covariance.mutable_data(), halfWidth.mutable_data(),
                        radius.mutable_data()};
  const auto size = static_cast<std::size_t>(radius.size());
  const py::gil_scoped_release unlocked;
  for (std::size_t i = 0; i < size; ++i) {
    double grid[3];
    for (std::size_t c = 0; c < 3; ++c) readers[c].Read(&grid[c], 1);
    const SitePrediction at = a.Predict(grid, probability, observed);
    std::copy_n(at.local, 3, to[0] + 3 * i);
    std::copy_n(&at.covariance[0][0], 9, to[1] + 9 * i);
    std::copy_n(at.halfWidth, 3, to[2] + 3 * i);
    to[3][i] = at.radius;
  }
  const py::gil_scoped_acquire locked;
  return py::make_tuple(local, covariance, halfWidth, radius);
}

py::list Compare(const SiteAdjustment& a) {
  py::list rows;
  for (const ModelComparison& m : a.CompareModels()) {
    py::dict row;
    row["smaller"] = NameOf(m.smaller);
    row["larger"] = NameOf(m.larger);
    row["ratio"] = m.ratio;
    row["probability"] = m.probability;
    rows.append(row);
  }
  return rows;
}

py::array_t<double> Deviations(const SiteAdjustment& a) {
  std::vector<double> values;
  for (std::size_t i = 0; i < a.Parameters().size(); ++i) values.push_back(a.Deviation(i));
  return ArrayOf(values);
}

py::array_t<double> HeightDeviations(const SiteAdjustment& a) {
  std::vector<double> values;
  for (std::size_t i = 0; i < a.HeightParameters().size(); ++i)
    values.push_back(a.HeightDeviation(i));
  return ArrayOf(values);
}

}  // namespace

std::shared_ptr<SiteAdjustment> Adjust(const geomath_files::SiteSolution& solution,
                                       const std::string& model, const std::string& heights,
                                       bool sigmaKnown, const std::array<double, 3>& common,
                                       bool robust) {
  AdjustmentOptions options;
  options.model = ByName(kModels, "adjust: model", model);
  options.heights = ByName(kHeights, "adjust: heights", heights);
  options.sigmaKnown = sigmaKnown;
  options.robust = robust;
  std::copy(common.begin(), common.end(), options.common);
  auto adjusted = geomath_files::AdjustSite(solution, options);
  if (!adjusted)
    throw UserError(fmt::format(
        "adjust: the control points do not determine the model \"{}\" with heights \"{}\"; where "
        "some points have standard deviations, all must",
        model, heights));
  return std::make_shared<SiteAdjustment>(std::move(*adjusted));
}

void BindAdjustment(py::module_& module) {
  py::class_<SiteAdjustment, std::shared_ptr<SiteAdjustment>> adjustment(module, "SiteAdjustment",
                                                                         R"(
A site calibration by least squares, judged; made by CalibrationResult.adjust.

Tables have a row for each control point and the columns north, east and height; NaN where a coordinate
takes no part. Metres and radians. Immutable.)");
  adjustment.attr("__module__") = "geomath";
  adjustment
      .def_property_readonly("residuals", &Table<&AdjustedCoordinate::residual>,
                             "Given minus computed, metres.")
      .def_property_readonly("redundancy", &Table<&AdjustedCoordinate::redundancy>,
                             "The share of an error that shows in its own residual, 0 to 1.")
      .def_property_readonly(
          "standardised", &Table<&AdjustedCoordinate::standardised>,
          "Residuals over their standard deviations, with the estimated variance.")
      .def_property_readonly("normalised", &Table<&AdjustedCoordinate::normalised>,
                             "The same with the given standard deviations: Baarda's w.")
      .def_property_readonly(
          "detectable", &Table<&AdjustedCoordinate::detectable>,
          "The smallest error that is found with power 0.80 at the level 0.001, metres.")
      .def_property_readonly("effect", &Table<&AdjustedCoordinate::effect>,
                             "What that error does to the worst control point, if it is not found.")
      .def_property_readonly("predicted", &Table<&AdjustedCoordinate::predicted>,
                             "Given minus what all other points make of it, metres.")
      .def_property_readonly("weight", &Table<&AdjustedCoordinate::weight>,
                             "The share of its weight that a robust solution left a coordinate.")
      .def_property_readonly(
          "parameters", [](const SiteAdjustment& a) { return ArrayOf(a.Parameters()); },
          "Those of positions, about the pivot: shifts, then scale and rotation, or what the model "
          "has.")
      .def_property_readonly("deviations", &Deviations, "Their standard deviations.")
      .def_property_readonly(
          "height_parameters",
          [](const SiteAdjustment& a) { return ArrayOf(a.HeightParameters()); },
          "Those of heights: the shift at the pivot, and the slopes to north and east.")
      .def_property_readonly("height_deviations", &HeightDeviations, "Their standard deviations.")
      .def_property_readonly(
          "pivot",
          [](const SiteAdjustment& a) {
            return std::array<double, 3>{a.Pivot()[0], a.Pivot()[1], a.Pivot()[2]};
          },
          "The grid point that the parameters are about: north, east, height.")
      .def_property_readonly(
          "variance", [](const SiteAdjustment& a) { return a.Positions().Variance(); },
          "The estimated variance of unit weight of positions; NaN without redundancy.")
      .def_property_readonly(
          "freedom", [](const SiteAdjustment& a) { return a.Positions().Freedom(); },
          "Surplus observations of positions.")
      .def("critical", &SiteAdjustment::Critical, py::arg("alpha") = 0.05, py::kw_only(),
           py::arg("heights") = false, R"(critical(self, alpha=0.05, *, heights=False)
--

The limit of standardised residuals for all points together at a level: Pope's tau, or with known
standard deviations Baarda's.)")
      .def("fit_probability", &SiteAdjustment::FitProbability, py::kw_only(),
           py::arg("heights") = false, R"(fit_probability(self, *, heights=False)
--

How likely residuals as large or larger are with known standard deviations; NaN without.)")
      .def("compare_models", &Compare, R"(compare_models(self)
--

F tests of rigid against similarity and similarity against affine: dicts of smaller, larger, ratio and
probability.)")
      .def("predict", &Predict, py::arg("north"), py::arg("east"), py::arg("h") = 0.0,
           py::kw_only(), py::arg("probability") = 0.95, py::arg("observed") = 0.0,
           R"(predict(self, north, east, h=0.0, *, probability=0.95, observed=0.0)
--

Grid positions in the local system: (local, covariance, half_width, radius).

north, east, h: metres, numbers or arrays, broadcast together to a shape S. local and half_width have
the shape S + (3,), covariance S + (3, 3), metres squared, radius S. half_width is that of the interval
of each coordinate that holds the true value with the probability, radius that of the circle around the
position; observed=1 makes them hold a further observation like those of the control.)")
      .def("__repr__", [](const SiteAdjustment& a) {
        return fmt::format("<SiteAdjustment of {} control points, model \"{}\">", a.Points().size(),
                           NameOf(a.Options().model));
      });
}

}  // namespace geomath_python
