#include <fmt/format.h>
#include <pybind11/stl.h>

#include <cmath>

#include "files/system/ellipsoid_names.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using geomath_files::AngleKind;
using geomath_files::JsonSection;
using geomath_files::KeySpelling;
using geomath_files::UserError;

namespace geomath_python {
namespace {

std::shared_ptr<Ellipsoid> MakeFrom(const nlohmann::json& section) {
  return std::make_shared<Ellipsoid>(geomath_files::ReadEllipsoid(
      JsonSection("Ellipsoid", "", section, geomath_files::kEllipsoidKeys, KeySpelling::snake)));
}

py::object ToGeocentric(const Ellipsoid& e, py::object lat, py::object lon, py::object h,
                        bool degrees, const py::object& out) {
  const std::array<Argument, 3> arguments = {
      {AngleArgument("lat", lat, AngleKind::latitude, degrees),
       AngleArgument("lon", lon, AngleKind::longitude, degrees),
       {"h", h}}};
  return ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    e.BLH_to_XYZ_Batch(c[0], c[1], c[2], n);
  });
}

py::object ToGeodetic(const Ellipsoid& e, py::object x, py::object y, py::object z, bool degrees,
                      const py::object& out) {
  const std::array<Argument, 3> arguments = {{{"x", x}, {"y", y}, {"z", z}}};
  return ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    e.XYZ_to_BLH_Batch(c[0], c[1], c[2], n);
    if (degrees) Multiply(c[0], n, kDegPerRad), Multiply(c[1], n, kDegPerRad);
  });
}

py::tuple StateOf(const Ellipsoid& e) { return py::make_tuple(e.a, e.invF, e.b); }

// Made of the inverse flattening or of the semi-minor axis: whichever gives the other to the bit.
std::shared_ptr<Ellipsoid> FromState(const py::tuple& state) {
  const double a = state[0].cast<double>(), invF = state[1].cast<double>(),
               b = state[2].cast<double>();
  const auto same = [&](const Ellipsoid& e) { return e.invF == invF && e.b == b; };
  if (std::isfinite(invF))  // a sphere has none
    if (auto e = MakeFrom({{"a", a}, {"invF", invF}}); same(*e)) return e;
  if (auto e = MakeFrom({{"a", a}, {"b", b}}); same(*e)) return e;
  throw UserError("the semi-axes and the inverse flattening do not belong together");
}

}  // namespace

void BindEllipsoid(py::module_& module) {
  py::class_<Ellipsoid, std::shared_ptr<Ellipsoid>> ellipsoid(module, "Ellipsoid", R"(
A reference ellipsoid of revolution.

    Ellipsoid("WGS84")
    Ellipsoid(6378137.0, 298.257223563)        # a, inv_f
    Ellipsoid(6377563.396, b=6356256.909)      # a, b

It converts between geodetic coordinates (latitude, longitude, height above the ellipsoid) and
earth-centred ones (x towards latitude 0, longitude 0; y towards longitude 90 degrees east; z towards
the north pole). Lengths are metres. Ellipsoids are immutable, equal when they have the same axes,
and can be pickled.

Raises Error for an unknown name or axes that no ellipsoid has.)");
  ellipsoid.attr("__module__") = "geomath";
  ellipsoid
      .def(py::init([](const py::str& name) {
             return MakeFrom(SectionOf({{"ellipsoid", name}}));
           }),
           py::arg("name"))
      .def(py::init([](const py::object& a, const py::object& invF, const py::object& b) {
             return MakeFrom(SectionOf({{"a", a}, {"invF", invF}, {"b", b}}));
           }),
           py::arg("a"), py::arg("inv_f") = py::none(), py::kw_only(), py::arg("b") = py::none())
      .def_readonly("a", &Ellipsoid::a, "Semi-major axis, metres.")
      .def_readonly("b", &Ellipsoid::b, "Semi-minor axis, metres.")
      .def_readonly("inv_f", &Ellipsoid::invF, "Inverse flattening a/(a - b).")
      .def_readonly("f", &Ellipsoid::f, "Flattening (a - b)/a.")
      .def_readonly("n", &Ellipsoid::n, "Third flattening (a - b)/(a + b).")
      .def_readonly("e", &Ellipsoid::e, "First eccentricity.")
      .def_readonly("e2", &Ellipsoid::e2, "First eccentricity squared, f(2 - f).")
      .def_readonly("ep2", &Ellipsoid::ep2, "Second eccentricity squared, e2/(1 - e2).")
      .def("to_geocentric", &ToGeocentric, py::arg("lat"), py::arg("lon"), py::arg("h") = 0.0,
           py::kw_only(), py::arg("degrees") = true, py::arg("out") = py::none(),
           R"(to_geocentric(self, lat, lon, h=0.0, *, degrees=True, out=None)
--

Geodetic to earth-centred coordinates: (x, y, z), metres.

lat, lon: degrees, or radians with degrees=False; h: metres above the ellipsoid. Numbers or arrays,
broadcast together. out: three float64 arrays for the results. A point that is not finite gives NaN.)")
      .def("to_geodetic", &ToGeodetic, py::arg("x"), py::arg("y"), py::arg("z"), py::kw_only(),
           py::arg("degrees") = true, py::arg("out") = py::none(),
           R"(to_geodetic(self, x, y, z, *, degrees=True, out=None)
--

Earth-centred to geodetic coordinates: (lat, lon, h), exact to rounding everywhere.

x, y, z: metres, numbers or arrays, broadcast together. lat and lon are degrees, or radians with
degrees=False; h is metres above the ellipsoid. out: three float64 arrays for the results. A point
that is not finite gives NaN.)")
      .def(
          "__eq__",
          [](const Ellipsoid& a, const Ellipsoid& b) {
            return a.a == b.a && a.b == b.b && a.invF == b.invF;
          },
          py::is_operator())
      .def("__hash__", [](const Ellipsoid& e) { return py::hash(py::make_tuple(e.a, e.b)); })
      .def("__repr__", [](const Ellipsoid& e) {
        return fmt::format("Ellipsoid({}, {})", NumberText(e.a), NumberText(e.invF));
      });
  DefinePickle(ellipsoid, &StateOf, &FromState);

  module.def("ellipsoid_names", &geomath_files::EllipsoidNames, R"(ellipsoid_names()
--

The names that Ellipsoid knows, in any letter case.)");
}

}  // namespace geomath_python
