#include <fmt/format.h>
#include <pybind11/stl.h>

#include <memory>
#include <string>

#include "files/models/shift_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/shift/geocentric_shift_grid.h"
#include "geomath/shift/shift_grid.h"
#include "geomath/shift/triangulation.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_python {
namespace {

// A shift of one class of the library with the bytes that it was read from, which its pickles carry.
template <class Shift>
struct ShiftObject {
  std::string bytes;
  ShiftChoice choice;
  std::unique_ptr<CoordinateShift> shift;
};
using GridObject = ShiftObject<ShiftGrid>;
using GeocentricGridObject = ShiftObject<GeocentricShiftGrid>;
using TriangulationObject = ShiftObject<Triangulation>;

}  // namespace

template <class Shift>
inline constexpr bool kBound<ShiftObject<Shift>> = true;

namespace {

template <class Shift>
std::shared_ptr<ShiftObject<Shift>> Parse(std::string bytes, ShiftChoice choice, const char* kind) {
  auto object = std::make_shared<ShiftObject<Shift>>();
  object->shift = ParseShift({{"", bytes}}, choice);
  if (!dynamic_cast<const Shift*>(object->shift.get()))
    throw UserError(fmt::format("{}: holds no {}", choice.file, kind));
  object->bytes = std::move(bytes);
  object->choice = std::move(choice);
  return object;
}

constexpr const char* kGrid = "grid of shifts";
constexpr const char* kGeocentricGrid = "grid of geocentric translations";
constexpr const char* kTriangulation = "triangulation";

std::shared_ptr<GridObject> GridFromFile(const py::object& path, const std::string& unit) {
  ShiftChoice choice;
  choice.file = PathOf(path);
  choice.unit = unit;
  const py::gil_scoped_release unlocked;
  return Parse<ShiftGrid>(ReadShiftBytes(choice.file).at(""), choice, kGrid);
}

std::shared_ptr<GeocentricGridObject> GeocentricGridFromFile(const py::object& path,
                                                             const std::string& position) {
  ShiftChoice choice;
  choice.file = PathOf(path);
  if (position != "source" && position != "target")
    throw UserError("GeocentricShiftGrid: position must be \"source\" or \"target\"");
  choice.position = position == "source" ? GridPosition::source : GridPosition::target;
  const py::gil_scoped_release unlocked;
  return Parse<GeocentricShiftGrid>(ReadShiftBytes(choice.file).at(""), choice, kGeocentricGrid);
}

std::string PositionOf(const GeocentricGridObject& grid) {
  return grid.choice.position == GridPosition::source ? "source" : "target";
}

ShiftChoice ChoiceOf(const std::string& file, const std::string& coordinates) {
  ShiftChoice choice;
  choice.file = file;
  if (coordinates == "plane" || coordinates == "geographic")
    choice.space = coordinates == "plane" ? ShiftSpace::plane : ShiftSpace::geographic;
  else if (!coordinates.empty())
    throw UserError("Triangulation: coordinates must be \"geographic\" or \"plane\"");
  return choice;
}

std::shared_ptr<TriangulationObject> TriangulationFromFile(const py::object& path,
                                                           const std::string& coordinates) {
  const ShiftChoice choice = ChoiceOf(PathOf(path), coordinates);
  const py::gil_scoped_release unlocked;
  return Parse<Triangulation>(ReadShiftBytes(choice.file).at(""), choice, kTriangulation);
}

std::string CoordinatesOf(const CoordinateShift& shift) {
  return shift.Space() == ShiftSpace::plane ? "plane" : "geographic";
}

template <class Shift, auto batch>
py::object Convert(const ShiftObject<Shift>& object, py::object north, py::object east,
                   py::object h, bool degrees, const py::object& out) {
  const CoordinateShift& shift = *object.shift;
  const bool angles = degrees && shift.Space() == ShiftSpace::geographic;
  const double unit = angles ? kRadPerDeg : 1;
  const std::array<Argument, 3> arguments = {
      {{"north", north, unit}, {"east", east, unit}, {"h", h}}};
  return ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    (shift.*batch)(c[0], c[1], c[2], n, 1, nullptr);
    if (!angles) return;
    Multiply(c[0], n, kDegPerRad);
    Multiply(c[1], n, kDegPerRad);
  });
}

template <auto batch>
py::object ConvertGeocentric(const GeocentricGridObject& grid, py::object x, py::object y,
                             py::object z, const py::object& out) {
  const std::array<Argument, 3> arguments = {{{"x", x}, {"y", y}, {"z", z}}};
  return ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    (*grid.shift.*batch)(c[0], c[1], c[2], n, 1, nullptr);
  });
}

// What the classes of geographic and plane shifts have.
template <class Class, class Shift>
void DefineConversions(Class& of, const ShiftObject<Shift>*) {
  of.def("forward", &Convert<Shift, &CoordinateShift::ForwardBatch>, py::arg("north"),
         py::arg("east"), py::arg("h") = 0.0, py::kw_only(), py::arg("degrees") = true,
         py::arg("out") = py::none(),
         R"(forward(self, north, east, h=0.0, *, degrees=True, out=None)
--

From the source to the target system: (north, east, h).

north, east: metres, or latitude and longitude in degrees (radians with degrees=False) where
coordinates is "geographic"; h: metres. Numbers or arrays, broadcast together. out: three float64
arrays for the results. A point outside, or in a hole, is NaN in all three.)")
      .def("inverse", &Convert<Shift, &CoordinateShift::InverseBatch>, py::arg("north"),
           py::arg("east"), py::arg("h") = 0.0, py::kw_only(), py::arg("degrees") = true,
           py::arg("out") = py::none(),
           R"(inverse(self, north, east, h=0.0, *, degrees=True, out=None)
--

From the target to the source system: the point that forward takes there.)")
      .def_property_readonly(
          "coordinates", [](const ShiftObject<Shift>& s) { return CoordinatesOf(*s.shift); },
          "What is shifted: \"geographic\" or \"plane\" coordinates.");
}

template <class Class, class Shift>
void DefineIdentity(Class& of, const ShiftObject<Shift>*) {
  of.attr("__module__") = "geomath";
  of.def(
        "__eq__",
        [](const ShiftObject<Shift>& a, const ShiftObject<Shift>& b) {
          return a.bytes == b.bytes && a.choice.unit == b.choice.unit &&
                 a.choice.position == b.choice.position && a.choice.space == b.choice.space;
        },
        py::is_operator())
      .def("__hash__", [](const ShiftObject<Shift>& s) { return py::hash(py::bytes(s.bytes)); })
      .def("__repr__", [](const py::object& self) {
        const auto& s = self.cast<const ShiftObject<Shift>&>();
        return TextOf(fmt::format("<{} from {}>",
                                  std::string(py::str(py::type::of(self).attr("__name__"))),
                                  s.choice.file));
      });
}

std::shared_ptr<GridObject> GridFromState(const py::tuple& s) {
  ShiftChoice choice;
  choice.file = PathOf(s[1]);
  choice.unit = s[2].cast<std::string>();
  return Parse<ShiftGrid>(s[0].cast<std::string>(), choice, kGrid);
}

std::shared_ptr<GeocentricGridObject> GeocentricGridFromState(const py::tuple& s) {
  ShiftChoice choice;
  choice.file = PathOf(s[1]);
  choice.position =
      s[2].cast<std::string>() == "source" ? GridPosition::source : GridPosition::target;
  return Parse<GeocentricShiftGrid>(s[0].cast<std::string>(), choice, kGeocentricGrid);
}

std::shared_ptr<TriangulationObject> TriangulationFromState(const py::tuple& s) {
  return Parse<Triangulation>(s[0].cast<std::string>(),
                              ChoiceOf(PathOf(s[1]), s[2].cast<std::string>()), kTriangulation);
}

}  // namespace

void BindShift(py::module_& module) {
  py::class_<GridObject, std::shared_ptr<GridObject>> grid(module, "ShiftGrid", R"(
A grid of shifts between two systems, from a file.

    grid = ShiftGrid.from_file("BETA2007.gsb")
    lat, lon, h = grid.forward(52.5, 13.4)

Immutable, and safe for any number of threads. Pickles carry the whole file.)");
  grid.def_static("from_file", &GridFromFile, py::arg("path"), py::kw_only(), py::arg("unit") = "",
                  R"(from_file(path, *, unit="")
--

An NTv2 file (.gsb) or a geodetic TIFF grid (docs/system-file.md).

unit: of the values behind their scale, for a TIFF that is no geodetic one. Raises Error, with the
place in the file, for what cannot be read.)");
  DefineConversions(grid, static_cast<GridObject*>(nullptr));
  DefineIdentity(grid, static_cast<GridObject*>(nullptr));
  DefinePickle(
      grid,
      [](const GridObject& g) {
        return py::make_tuple(py::bytes(g.bytes), TextOf(g.choice.file), g.choice.unit);
      },
      &GridFromState);

  py::class_<GeocentricGridObject, std::shared_ptr<GeocentricGridObject>> geocentric(
      module, "GeocentricShiftGrid", R"(
A grid of geocentric translations between two systems, from a file.

    grid = GeocentricShiftGrid.from_file("fr_ign_gr3df97a.tif", position="target")
    x, y, z = grid.forward(4200000, 180000, 4780000)

Immutable, and safe for any number of threads. Pickles carry the whole file.)");
  geocentric.def_static("from_file", &GeocentricGridFromFile, py::arg("path"), py::kw_only(),
                        py::arg("position"),
                        R"(from_file(path, *, position)
--

A geodetic TIFF grid of translations (docs/system-file.md).

position: whose latitude and longitude the translations are looked up at, "source" for the point that
forward is given, "target" for the one that it gives (France). Raises Error, with the place in the file,
for what cannot be read.)");
  geocentric
      .def("forward", &ConvertGeocentric<&CoordinateShift::ForwardBatch>, py::arg("x"),
           py::arg("y"), py::arg("z"), py::kw_only(), py::arg("out") = py::none(),
           R"(forward(self, x, y, z, *, out=None)
--

From the source to the target system: (x, y, z), metres.

Numbers or arrays, broadcast together. out: three float64 arrays for the results. A point outside, or in
a hole, is NaN in all three.)")
      .def("inverse", &ConvertGeocentric<&CoordinateShift::InverseBatch>, py::arg("x"),
           py::arg("y"), py::arg("z"), py::kw_only(), py::arg("out") = py::none(),
           R"(inverse(self, x, y, z, *, out=None)
--

From the target to the source system: the point that forward takes there.)")
      .def_property_readonly(
          "position", &PositionOf,
          "Where translations are looked up: at the \"source\" or the \"target\".");
  DefineIdentity(geocentric, static_cast<GeocentricGridObject*>(nullptr));
  DefinePickle(
      geocentric,
      [](const GeocentricGridObject& g) {
        return py::make_tuple(py::bytes(g.bytes), TextOf(g.choice.file), PositionOf(g));
      },
      &GeocentricGridFromState);

  py::class_<TriangulationObject, std::shared_ptr<TriangulationObject>> triangulation(
      module, "Triangulation", R"(
A transformation that is affine in each triangle of a network, from a file.

    network = Triangulation.from_file("fi_nls_ykj_etrs35fin.json")
    north, east, h = network.forward(6700000, 3210000)

Immutable, and safe for any number of threads. Pickles carry the whole file.)");
  triangulation.def_static("from_file", &TriangulationFromFile, py::arg("path"), py::kw_only(),
                           py::arg("coordinates") = "",
                           R"(from_file(path, *, coordinates="")
--

A triangulation in JSON, format 1.0 or 1.1 (docs/system-file.md).

coordinates: "geographic" or "plane", for systems that have no EPSG code. Raises Error, with the place
in the file, for what cannot be read.)");
  DefineConversions(triangulation, static_cast<TriangulationObject*>(nullptr));
  DefineIdentity(triangulation, static_cast<TriangulationObject*>(nullptr));
  DefinePickle(
      triangulation,
      [](const TriangulationObject& t) {
        return py::make_tuple(py::bytes(t.bytes), TextOf(t.choice.file),
                              t.choice.space ? CoordinatesOf(*t.shift) : "");
      },
      &TriangulationFromState);
}

}  // namespace geomath_python
