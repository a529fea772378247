#include <fmt/format.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

#include "files/models/magnetic_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/magnetic/magnetic_field.h"
#include "geomath/platform/decimal_year.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_python {
namespace {

constexpr double kKilometre = 1e-3;  // of a metre

/// What Python calls a model: one, or several of years that follow each other. Never empty.
struct ModelObject {
  MagneticModelSeries parts;
};

struct FieldObject {
  std::shared_ptr<ModelObject> model;  // of the date: one part
  MagneticField field;
};

}  // namespace

template <>
inline constexpr bool kBound<ModelObject> = true;
template <>
inline constexpr bool kBound<FieldObject> = true;

namespace {

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

std::shared_ptr<FieldObject> FieldAt(const ModelObject& model, const py::object& date) {
  const double year = YearFrom(date);
  const WMMtype_MagneticModel& part = ModelOfYear(model.parts, year);
  Warn(YearsWarning(model.parts, year, py::str(date)));
  const auto of = std::make_shared<ModelObject>(ModelObject{{part}});
  return std::make_shared<FieldObject>(FieldObject{of, MagneticField(part, year)});
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

std::array<Argument, 3> ArgumentsOf(const py::object& lat, const py::object& lon,
                                    const py::object& h, bool degrees) {
  return {{AngleArgument("lat", lat, AngleKind::latitude, degrees, true),
           AngleArgument("lon", lon, AngleKind::longitude, degrees, true),
           {"h", h, kKilometre}}};
}

template <Part part>
py::object Elements(const FieldObject& object, py::object lat, py::object lon, py::object h,
                    bool degrees) {
  const auto arguments = ArgumentsOf(lat, lon, h, degrees);
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
  const auto arguments = ArgumentsOf(lat, lon, h, degrees);
  return ConvertColumns<1>(arguments, out, [&](double* const* c, std::size_t, std::size_t count) {
    Evaluate(object.field, c, count,
             [&](std::size_t i, const MagneticPoint& point) { c[0][i] = point.field.declination; });
    if (!degrees) Multiply(c[0], count, kRadPerDeg);
  });
}

py::tuple StateOf(const ModelObject& model) {
  py::list parts;
  for (const WMMtype_MagneticModel& m : model.parts)
    parts.append(py::make_tuple(m.editionDate, m.epoch, m.modelName, ArrayOf(m.g), ArrayOf(m.h),
                                ArrayOf(m.gDot), ArrayOf(m.hDot), m.nMax, m.nMaxSecVar,
                                m.coefficientFileEndDate));
  return py::tuple(parts);
}

WMMtype_MagneticModel PartFromState(const py::tuple& s) {
  const int degree = s[7].cast<int>(), changing = s[8].cast<int>();
  if (degree < 1 || degree > kMaxMagneticDegree || changing < 0 || changing > degree)
    throw UserError("a model has no such degree");
  const auto column = [&](std::size_t i) {
    auto values = s[i].cast<std::vector<double>>();
    if (values.size() != TermCount(degree) ||
        !std::all_of(values.begin(), values.end(), [](double x) { return std::isfinite(x); }))
      throw UserError("the coefficients are not those of the degree");
    return values;
  };
  return WMMtype_MagneticModel{
      FiniteOf(s[0]), FiniteOf(s[1]), s[2].cast<std::string>().substr(0, kMaxModelName),
      column(3),      column(4),      column(5),
      column(6),      degree,         changing,
      FiniteOf(s[9])};
}

std::shared_ptr<ModelObject> FromState(const py::tuple& state) {
  auto model = std::make_shared<ModelObject>();
  for (const py::handle part : state) model->parts.push_back(PartFromState(part.cast<py::tuple>()));
  if (model->parts.empty()) throw UserError("MagneticModel: the state holds no model");
  return model;
}

bool Equal(const ModelObject& a, const ModelObject& b) {
  const auto same = [](const WMMtype_MagneticModel& p, const WMMtype_MagneticModel& q) {
    return p.modelName == q.modelName && p.epoch == q.epoch &&
           p.coefficientFileEndDate == q.coefficientFileEndDate && p.g == q.g && p.h == q.h &&
           p.gDot == q.gDot && p.hDot == q.hDot;
  };
  return std::equal(a.parts.begin(), a.parts.end(), b.parts.begin(), b.parts.end(), same);
}

std::string NameOf(const ModelObject& model) {
  const std::string &first = model.parts.front().modelName, &last = model.parts.back().modelName;
  return first == last ? first : first + " to " + last;
}

double EpochOf(const ModelObject& model) { return model.parts.front().epoch; }
double EndOf(const ModelObject& model) { return model.parts.back().coefficientFileEndDate; }

std::string ReprOf(const ModelObject& m) {
  return fmt::format("<MagneticModel {}, {} to {}>", NameOf(m), NumberText(EpochOf(m)),
                     NumberText(EndOf(m)));
}

py::tuple StateOfField(const FieldObject& f) {
  return py::make_tuple(f.model, f.field.DecimalYear());
}

std::shared_ptr<FieldObject> FieldFromState(const py::tuple& state) {
  const auto of = PartOf<ModelObject>(state[0]);
  return std::make_shared<FieldObject>(
      FieldObject{of, MagneticField(of->parts.front(), FiniteOf(state[1]))});
}

}  // namespace

void BindMagnetic(py::module_& module) {
  py::class_<ModelObject, std::shared_ptr<ModelObject>> model(module, "MagneticModel", R"(
A magnetic model, or several of years that follow each other.

    MagneticModel().field("2026-05-31").declination(52.5, 13.4)
    MagneticModel("IGRF14.shc").field("1912-01-01")

path: a coefficient file (.COF, SHDF or .shc), or the name of a built-in model, such as "WMM-2010";
without it all built-in ones, WMM-2010, WMM-2015v2, WMM-2020 and WMM-2025, of which a date takes its
own. Models are immutable, equal when their coefficients are, and can be pickled.

Raises Error when the file holds no model, or is damaged.)");
  model.attr("__module__") = "geomath";
  model
      .def(py::init([](const py::object& path) {
             return std::make_shared<ModelObject>(ModelObject{OpenMagneticModels(PathOf(path))});
           }),
           py::arg("path") = py::none())
      .def_property_readonly("name", &NameOf, "The name that the publisher gives it.")
      .def_property_readonly("epoch", &EpochOf, "First of its years, decimal.")
      .def_property_readonly("end", &EndOf, "Last of its years, decimal.")
      .def_property_readonly(
          "max_degree",
          [](const ModelObject& m) {
            return std::ranges::max(m.parts, {}, &WMMtype_MagneticModel::nMax).nMax;
          },
          "The maximum degree.")
      .def("field", &FieldAt, py::arg("date"), R"(field(self, date)
--

The field at a date: anything with year, month and day, a numpy.datetime64, a text such as
"2026-05-31", or a decimal year. A UserWarning says when the date is outside the years of the model.)")
      .def("__eq__", &Equal, py::is_operator())
      .def("__hash__",
           [](const ModelObject& m) { return py::hash(py::make_tuple(NameOf(m), EpochOf(m))); })
      .def("__repr__", &ReprOf);
  DefinePickle(
      model, [](const ModelObject& m) { return StateOf(m); }, &FromState);

  py::class_<FieldObject, std::shared_ptr<FieldObject>> field(module, "MagneticField", R"(
The magnetic field at one date.

    MagneticField("2026-05-31").declination(52.5, 13.4)

date: as MagneticModel.field takes it, which makes the fields of other models than the built-in ones.

Where the horizontal intensity is below CAUTION_ZONE a compass is not to be relied upon, below
BLACKOUT_ZONE it is of no use (nT).

Positions are geodetic latitude and longitude and the height above the WGS84 ellipsoid in metres. A
position that is not finite gives NaN. Fields are immutable and can be pickled.)");
  field.attr("__module__") = "geomath";
  field.attr("CAUTION_ZONE") = kCautionZone;
  field.attr("BLACKOUT_ZONE") = kBlackoutZone;
  field
      .def(
          py::init([](const py::object& date) { return FieldAt({BuiltInMagneticModels()}, date); }),
          py::arg("date"))
      .def_readonly("model", &FieldObject::model, "The model of the date.")
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
             return py::hash(py::make_tuple(NameOf(*f.model), f.field.DecimalYear()));
           })
      .def("__repr__", [](const FieldObject& f) {
        return fmt::format("<MagneticField of {} at {}>", NameOf(*f.model),
                           NumberText(f.field.DecimalYear()));
      });
  DefinePickle(field, &StateOfField, &FieldFromState);
}

}  // namespace geomath_python
