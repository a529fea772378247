#include <fmt/format.h>

#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using geomath_files::JsonSection;
using geomath_files::KeySpelling;

namespace geomath_python {
namespace {

constexpr double kPerMillion = 1e6;

std::shared_ptr<DatumObject> Make(const py::object& ellipsoid, py::object dx, py::object dy,
                                  py::object dz, py::object rx, py::object ry, py::object rz,
                                  py::object ppm, py::object rotation) {
  const auto section = SectionOf({{"dX", dx},
                                  {"dY", dy},
                                  {"dZ", dz},
                                  {"rX", rx},
                                  {"rY", ry},
                                  {"rZ", rz},
                                  {"ppm", ppm},
                                  {"rotation", rotation}});
  const auto local = EllipsoidFrom(ellipsoid);
  return std::make_shared<DatumObject>(DatumObject{
      local, geomath_files::ReadDatum(
                 JsonSection("Datum", "", section, geomath_files::kDatumKeys, KeySpelling::snake),
                 local.get())});
}

using Batch = std::size_t (Datum::*)(double*, double*, double*, std::size_t, std::ptrdiff_t) const;

template <Batch batch>
py::object Transform(const DatumObject& object, py::object x, py::object y, py::object z,
                     const py::object& out) {
  const std::array<Argument, 3> arguments = {{{"x", x}, {"y", y}, {"z", z}}};
  return ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    (object.datum.*batch)(c[0], c[1], c[2], n, 1);
  });
}

py::tuple TupleOfPoint(const TAbstractPoint3<double>& p) {
  return py::make_tuple(p[0], p[1], p[2]);
}

py::tuple StateOf(const DatumObject& d) {
  return py::make_tuple(d.ellipsoid, TupleOfPoint(d.datum.Shift()),
                        TupleOfPoint(d.datum.Rotation()), d.datum.Scale());
}

TAbstractPoint3<double> PointFrom(const py::handle& tuple) {
  const auto p = tuple.cast<py::tuple>();
  return {FiniteOf(p[0]), FiniteOf(p[1]), FiniteOf(p[2])};
}

std::shared_ptr<DatumObject> FromState(const py::tuple& state) {
  const auto local = PartOf<Ellipsoid>(state[0]);
  return std::make_shared<DatumObject>(
      DatumObject{local, Datum(local.get(), PointFrom(state[1]), PointFrom(state[2]),
                               FiniteOf(state[3]), userTypeUser, false, nullptr)});
}

std::string Repr(const DatumObject& object) {
  const auto& t = object.datum.Shift();
  const auto& r = object.datum.Rotation();
  return fmt::format("Datum({}, {}, {}, {}, {}, {}, {}, {:.12g})",
                     std::string(py::repr(py::cast(object.ellipsoid))), NumberText(t[0]),
                     NumberText(t[1]), NumberText(t[2]), NumberText(r[0]), NumberText(r[1]),
                     NumberText(r[2]), object.datum.Scale() * kPerMillion);
}

}  // namespace

void BindDatum(py::module_& module) {
  py::class_<DatumObject, std::shared_ptr<DatumObject>> datum(module, "Datum", R"(
A local geodetic datum: an ellipsoid and the seven parameters from its earth-centred frame to WGS84.

    Datum("Airy 1830", 446.448, -125.157, 542.060, -0.1502, -0.2470, -0.8421, -20.4894)

ellipsoid: an Ellipsoid or the name of one; dx, dy, dz: metres; rx, ry, rz: arc-seconds; ppm: the
scale minus 1, times a million. Parameters are those from the local datum to WGS84. rotation is the
sense of the published rotations: "coordinate-frame" (EPSG method 1032) or "position-vector" (EPSG
method 1033). The rotation is computed exactly, not with small angles.

Datums are immutable, equal when ellipsoid and parameters are, and can be pickled. Raises Error for
parameters that make no sense.)");
  datum.attr("__module__") = "geomath";
  datum
      .def(py::init(&Make), py::arg("ellipsoid"), py::arg("dx") = 0.0, py::arg("dy") = 0.0,
           py::arg("dz") = 0.0, py::arg("rx") = 0.0, py::arg("ry") = 0.0, py::arg("rz") = 0.0,
           py::arg("ppm") = 0.0, py::kw_only(), py::arg("rotation") = "coordinate-frame")
      .def_property_readonly(
          "ellipsoid", [](const DatumObject& d) { return d.ellipsoid; },
          "The ellipsoid of the local system.")
      .def_property_readonly(
          "shift", [](const DatumObject& d) { return TupleOfPoint(d.datum.Shift()); },
          "dx, dy, dz, metres.")
      .def_property_readonly(
          "rotation", [](const DatumObject& d) { return TupleOfPoint(d.datum.Rotation()); },
          "rx, ry, rz, arc-seconds, in the coordinate-frame sense.")
      .def_property_readonly(
          "ppm", [](const DatumObject& d) { return d.datum.Scale() * kPerMillion; },
          "The scale minus 1, times a million.")
      .def("to_wgs84", &Transform<&Datum::ToWGS84DatumBatch>, py::arg("x"), py::arg("y"),
           py::arg("z"), py::kw_only(), py::arg("out") = py::none(),
           R"(to_wgs84(self, x, y, z, *, out=None)
--

Earth-centred coordinates of this datum to those of WGS84: (x, y, z), metres.

x, y, z: metres, numbers or arrays, broadcast together. out: three float64 arrays for the results. A
point that is not finite gives NaN.)")
      .def("from_wgs84", &Transform<&Datum::ToLocalDatumBatch>, py::arg("x"), py::arg("y"),
           py::arg("z"), py::kw_only(), py::arg("out") = py::none(),
           R"(from_wgs84(self, x, y, z, *, out=None)
--

Earth-centred coordinates of WGS84 to those of this datum, the exact inverse of to_wgs84.)")
      .def(
          "__eq__",
          [](const DatumObject& a, const DatumObject& b) { return StateOf(a).equal(StateOf(b)); },
          py::is_operator())
      .def("__hash__", [](const DatumObject& d) { return py::hash(StateOf(d)); })
      .def("__repr__", &Repr);
  DefinePickle(datum, &StateOf, &FromState);
}

}  // namespace geomath_python
