#include <fmt/format.h>
#include <pybind11/stl.h>

#include <cmath>
#include <memory>
#include <string>

#include "files/models/magnetic_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/magnetic/decimal_year.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"

using namespace zel_cs::geomath;
using namespace geomath_tools;

namespace geomath_python {
namespace {

constexpr double kKilometre = 1e-3;  // of a metre

using Model = WMMtype_MagneticModel;

struct FieldObject {
  std::shared_ptr<Model> model;
  MagneticField field;
};

// A decimal year from a number, a text like 2026-05-31, or anything with year, month and day.
double YearFrom(const py::object& given) {
  py::object date = given;
  if (py::isinstance<py::str>(date)) return YearOfDate(date.cast<std::string>(), "date");
  if (py::hasattr(date, "dtype") && py::cast<py::array>(date).dtype().kind() == 'M')
    date = date.attr("astype")("datetime64[D]").attr("item")();
  if (!py::hasattr(date, "year")) {
    if (!PyNumber_Check(date.ptr()))
      throw py::type_error("date: must be a date, a text such as \"2026-05-31\" or a decimal year");
    const double year = py::float_(date);
    if (!std::isfinite(year)) throw UserError("date: a decimal year must be a finite number");
    return year;
  }
  const auto year = DecimalYear(date.attr("year").cast<int>(), date.attr("month").cast<int>(),
                                date.attr("day").cast<int>());
  if (!year) throw UserError("date: the calendar has no such day");
  return *year;
}

std::shared_ptr<FieldObject> FieldAt(const std::shared_ptr<Model>& model, const py::object& date) {
  auto object = std::make_shared<FieldObject>(model, MagneticField(*model, YearFrom(date)));
  Warn(YearsWarning(object->field, *model, py::str(date)));
  return object;
}

// Elements in the order of the class MagneticElements of Python.
constexpr double MagneticElements::*kElements[] = {
    &MagneticElements::x,           &MagneticElements::y,
    &MagneticElements::z,           &MagneticElements::h,
    &MagneticElements::f,           &MagneticElements::declination,
    &MagneticElements::inclination, &MagneticElements::gridVariation};
constexpr std::size_t kCount = std::size(kElements), kFirstAngle = 5;

using Part = MagneticElements MagneticPoint::*;

// Runs the field over a block and hands every point to `keep`.
template <class Keep>
void Evaluate(const MagneticField& field, double* const* c, std::size_t count, Keep keep) {
  constexpr std::size_t kPoints = 64;  // whose results stay in the first-level cache
  MagneticPoint results[kPoints];
  for (std::size_t first = 0; first < count; first += kPoints) {
    const std::size_t n = std::min(kPoints, count - first);
    field.AtBatch(c[0] + first, c[1] + first, c[2] + first, n, results);
    for (std::size_t i = 0; i < n; ++i) keep(first + i, results[i]);
  }
}

template <Part part>
py::object Elements(const FieldObject& object, py::object lat, py::object lon, py::object h,
                    bool degrees) {
  const double unit = degrees ? 1 : kDegPerRad;
  const std::array<Argument, 3> arguments = {
      {{"lat", lat, unit}, {"lon", lon, unit}, {"h", h, kKilometre}}};
  const py::object all = ConvertColumns<kCount>(
      arguments, py::none(), [&](double* const* c, std::size_t, std::size_t count) {
        Evaluate(object.field, c, count, [&](std::size_t i, const MagneticPoint& point) {
          for (std::size_t e = 0; e < kCount; ++e) c[e][i] = point.*part.*kElements[e];
        });
        for (std::size_t e = kFirstAngle; e < kCount && !degrees; ++e)
          Multiply(c[e], count, kRadPerDeg);
      });
  return py::module_::import("geomath").attr("MagneticElements")(*py::tuple(all));
}

py::object Declination(const FieldObject& object, py::object lat, py::object lon, py::object h,
                       bool degrees, const py::object& out) {
  const double unit = degrees ? 1 : kDegPerRad;
  const std::array<Argument, 3> arguments = {
      {{"lat", lat, unit}, {"lon", lon, unit}, {"h", h, kKilometre}}};
  return ConvertColumns<1>(arguments, out, [&](double* const* c, std::size_t, std::size_t count) {
    Evaluate(object.field, c, count,
             [&](std::size_t i, const MagneticPoint& point) { c[0][i] = point.field.declination; });
    if (!degrees) Multiply(c[0], count, kRadPerDeg);
  });
}

py::tuple StateOf(const Model& m) {
  return py::make_tuple(m.editionDate, m.epoch, m.modelName, ArrayOf(m.g), ArrayOf(m.h),
                        ArrayOf(m.gDot), ArrayOf(m.hDot), m.nMax, m.nMaxSecVar,
                        m.coefficientFileEndDate);
}

std::shared_ptr<Model> FromState(const py::tuple& s) {
  const auto column = [&](std::size_t i) { return s[i].cast<std::vector<double>>(); };
  return std::make_shared<Model>(Model{
      s[0].cast<double>(), s[1].cast<double>(), s[2].cast<std::string>(), column(3), column(4),
      column(5), column(6), s[7].cast<int>(), s[8].cast<int>(), s[9].cast<double>()});
}

bool Equal(const Model& a, const Model& b) {
  return a.modelName == b.modelName && a.epoch == b.epoch &&
         a.coefficientFileEndDate == b.coefficientFileEndDate && a.g == b.g && a.h == b.h &&
         a.gDot == b.gDot && a.hDot == b.hDot;
}

std::string ReprOf(const Model& m) {
  return fmt::format("<MagneticModel {}, {} to {}>", m.modelName, NumberText(m.epoch),
                     NumberText(m.coefficientFileEndDate));
}

py::tuple StateOfField(const FieldObject& f) {
  return py::make_tuple(f.model, f.field.DecimalYear());
}

}  // namespace

void BindMagnetic(py::module_& module) {
  py::class_<Model, std::shared_ptr<Model>> model(module, "MagneticModel", R"(
A World Magnetic Model.

    MagneticModel().field("2012-07-01").declination(52.5, 13.4)
    MagneticModel("WMM2025.COF")

path: a coefficient file in either published layout; without it the built-in WMM-2010, made for 2010
to 2015. Models are immutable, equal when their coefficients are, and can be pickled.

Raises Error when the file holds no model, or one that was cut off.)");
  model.attr("__module__") = "geomath";
  model
      .def(py::init([](const py::object& path) {
             return std::shared_ptr<Model>(OpenMagneticModel(PathOf(path)));
           }),
           py::arg("path") = py::none())
      .def_readonly("name", &Model::modelName, "The name that the publisher gives it.")
      .def_readonly("epoch", &Model::epoch, "First of its years, decimal.")
      .def_readonly("end", &Model::coefficientFileEndDate, "Last of its years, decimal.")
      .def_readonly("max_degree", &Model::nMax, "The maximum degree.")
      .def("field", &FieldAt, py::arg("date"), R"(field(self, date)
--

The field at a date: anything with year, month and day, a numpy.datetime64, a text such as
"2026-05-31", or a decimal year. A UserWarning says when the date is outside the years of the model.)")
      .def("__eq__", &Equal, py::is_operator())
      .def("__hash__",
           [](const Model& m) { return py::hash(py::make_tuple(m.modelName, m.epoch)); })
      .def("__repr__", &ReprOf)
      .def(py::pickle([](const Model& m) { return StateOf(m); }, &FromState));

  py::class_<FieldObject, std::shared_ptr<FieldObject>> field(module, "MagneticField", R"(
The magnetic field of a model at one date; made by MagneticModel.field.

Positions are geodetic latitude and longitude and the height above the WGS84 ellipsoid in metres. A
position that is not finite gives NaN. Fields are immutable and can be pickled.)");
  field.attr("__module__") = "geomath";
  field.def_readonly("model", &FieldObject::model, "The model.")
      .def_property_readonly(
          "decimal_year", [](const FieldObject& f) { return f.field.DecimalYear(); },
          "The date as a year and its elapsed fraction.")
      .def("declination", &Declination, py::arg("lat"), py::arg("lon"), py::arg("h") = 0.0,
           py::kw_only(), py::arg("degrees") = true, py::arg("out") = py::none(),
           R"(declination(self, lat, lon, h=0.0, *, degrees=True, out=None)
--

From true north to magnetic north, east positive, degrees (radians with degrees=False).

lat, lon: degrees, or radians with degrees=False; h: metres. Numbers or arrays, broadcast together.)")
      .def("elements", &Elements<&MagneticPoint::field>, py::arg("lat"), py::arg("lon"),
           py::arg("h") = 0.0, py::kw_only(), py::arg("degrees") = true,
           R"(elements(self, lat, lon, h=0.0, *, degrees=True)
--

All elements of the field as MagneticElements: nT, and degrees (radians with degrees=False).

lat, lon: degrees, or radians with degrees=False; h: metres. Numbers or arrays, broadcast together.)")
      .def("yearly_change", &Elements<&MagneticPoint::yearlyChange>, py::arg("lat"), py::arg("lon"),
           py::arg("h") = 0.0, py::kw_only(), py::arg("degrees") = true,
           R"(yearly_change(self, lat, lon, h=0.0, *, degrees=True)
--

How much the elements change in a year, as `elements` gives them.)")
      .def(
          "__eq__",
          [](const FieldObject& a, const FieldObject& b) {
            return Equal(*a.model, *b.model) && a.field.DecimalYear() == b.field.DecimalYear();
          },
          py::is_operator())
      .def("__hash__",
           [](const FieldObject& f) {
             return py::hash(py::make_tuple(f.model->modelName, f.field.DecimalYear()));
           })
      .def("__repr__",
           [](const FieldObject& f) {
             return fmt::format("<MagneticField of {} at {}>", f.model->modelName,
                                NumberText(f.field.DecimalYear()));
           })
      .def(py::pickle(&StateOfField, [](const py::tuple& state) {
        const auto of = state[0].cast<std::shared_ptr<Model>>();
        return std::make_shared<FieldObject>(of, MagneticField(*of, state[1].cast<double>()));
      }));
}

}  // namespace geomath_python
