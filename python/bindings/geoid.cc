#include "python/bindings/geoid.h"

#include <fmt/format.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>

#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/geodesic/grid_line.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_python {
namespace {

py::object HeightOf(const GeoidObject& geoid, py::object lat, py::object lon, bool degrees,
                    const py::object& out) {
  const std::array<Argument, 2> arguments = {
      {AngleArgument("lat", lat, AngleKind::latitude, degrees),
       AngleArgument("lon", lon, AngleKind::longitude, degrees)}};
  return ConvertColumns<1>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    double heights[kBlock];
    geoid.Heights().Heights(c[0], c[1], heights, n);
    std::copy_n(heights, n, c[0]);
  });
}

py::object DeflectionOf(const GeoidObject& geoid, py::object lat, py::object lon, py::object h,
                        const py::object& ellipsoid, bool degrees, const py::object& out) {
  const std::shared_ptr<Ellipsoid> on = EllipsoidFrom(ellipsoid);
  const std::array<Argument, 3> arguments = {
      {AngleArgument("lat", lat, AngleKind::latitude, degrees),
       AngleArgument("lon", lon, AngleKind::longitude, degrees),
       {"h", h}}};
  return ConvertColumns<2>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    Deflection found[kBlock];
    DeflectionsAt(geoid.Heights(), *on, c[0], c[1], c[2], found, n);
    for (std::size_t i = 0; i < n; ++i) {
      c[0][i] = found[i].xi / kRadPerArcSecond;
      c[1][i] = found[i].eta / kRadPerArcSecond;
    }
  });
}

// Both for `model` and `grid` of a file: its warnings are those of Python.
std::unique_ptr<LoadedGeoid> Open(const GeoidChoice& choice) {
  const py::gil_scoped_release unlocked;
  return OpenGeoid(choice);
}

}  // namespace

// Regional grids.

namespace {

// A copy in the row order of the scheme: what the caller does to the array later is his own.
std::vector<float> NodesFrom(py::object grid, bool turned) {
  if (turned) grid = py::module_::import("numpy").attr("flipud")(grid);
  const auto nodes = py::array_t<float, py::array::c_style | py::array::forcecast>::ensure(grid);
  if (!nodes) throw py::error_already_set();
  return {nodes.data(), nodes.data() + nodes.size()};
}

std::shared_ptr<RegionalGeoidObject> MakeRegional(const py::object& grid, double south, double west,
                                                  double latStep, double lonStep,
                                                  const std::string& interpolation,
                                                  bool northFirst) {
  const auto fail = [](const std::string& reason) -> void {
    throw UserError("RegionalGeoid: " + reason);
  };
  const auto given = py::array::ensure(grid);
  if (!given || given.ndim() != 2 ||
      std::string_view("iuf").find(given.dtype().kind()) == std::string_view::npos)
    fail("the grid must be a two-dimensional array of heights");
  constexpr py::ssize_t kMostOnSide = 1 << 30;
  if (given.shape(0) < 2 || given.shape(1) < 2 || given.shape(0) > kMostOnSide ||
      given.shape(1) > kMostOnSide)
    fail("the grid must have two rows and two columns at least");
  if (!(latStep > 0 && lonStep > 0)) fail("the steps must be above 0");
  GridPlace place{south,
                  west,
                  latStep,
                  lonStep,
                  static_cast<int>(given.shape(0)),
                  static_cast<int>(given.shape(1))};
  if (const std::string problem = PlaceProblem(place); !problem.empty()) fail(problem);
  const GridScheme& scheme = ChooseScheme(interpolation);
  std::vector<float> nodes = NodesFrom(given, northFirst != scheme.northFirst);
  if (auto closed = CloseSeam(place, nodes.data()); !closed.empty()) nodes = std::move(closed);
  return std::make_shared<RegionalGeoidObject>(place, scheme, std::move(nodes));
}

std::shared_ptr<GeoidObject> RegionalFromFile(const py::object& path,
                                              const std::string& interpolation) {
  return GeoidObjectOf(*Open({PathOf(path), interpolation, "", "", false}));
}

py::object NodesOf(const std::shared_ptr<RegionalGeoidObject>& geoid) {
  const py::array_t<float> view({geoid->place.rows, geoid->place.columns}, geoid->nodes.data(),
                                py::cast(geoid));
  view.attr("flags").attr("writeable") = false;
  return view;
}

py::tuple StateOf(const std::shared_ptr<RegionalGeoidObject>& g) {
  return py::make_tuple(NodesOf(g), g->place.south, g->place.west, g->place.latStep,
                        g->place.lonStep, g->scheme.name, g->scheme.northFirst);
}

std::shared_ptr<RegionalGeoidObject> RegionalFromState(const py::tuple& s) {
  return MakeRegional(s[0], s[1].cast<double>(), s[2].cast<double>(), s[3].cast<double>(),
                      s[4].cast<double>(), s[5].cast<std::string>(), s[6].cast<bool>());
}

std::string ReprOfRegional(const RegionalGeoidObject& g) {
  const GridPlace& p = g.place;
  return fmt::format("<RegionalGeoid {}, {} x {} nodes from {} {}, steps {} {}>", g.scheme.name,
                     p.rows, p.columns, NumberText(p.south), NumberText(p.west),
                     NumberText(p.latStep), NumberText(p.lonStep));
}

bool Equal(const RegionalGeoidObject& a, const RegionalGeoidObject& b) {
  const auto placed = [](const RegionalGeoidObject& g) {
    return std::tie(g.place.south, g.place.west, g.place.latStep, g.place.lonStep, g.place.rows,
                    g.place.columns);
  };
  const auto same = [](float x, float y) { return x == y || (std::isnan(x) && std::isnan(y)); };
  return placed(a) == placed(b) && &a.scheme == &b.scheme &&
         std::equal(a.nodes.begin(), a.nodes.end(), b.nodes.begin(), b.nodes.end(), same);
}

}  // namespace

RegionalGeoidObject::RegionalGeoidObject(const GridPlace& where, const GridScheme& how,
                                         std::vector<float> values)
    : place(where), scheme(how), nodes(std::move(values)), heights(scheme, place, nodes.data()) {}

// Harmonic models.

namespace {

std::vector<double> ColumnOf(const py::object& values, const char* name) {
  const auto array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(values);
  if (!array || array.ndim() != 1)
    throw UserError(fmt::format("GlobalGeoid: {} must be a one-dimensional array", name));
  return {array.data(), array.data() + array.size()};
}

std::shared_ptr<GlobalGeoidObject> MakeGlobal(const py::object& cosines, const py::object& sines,
                                              const py::object& correctionCosines,
                                              const py::object& correctionSines) {
  GeoidCoefficients c;
  c.C = ColumnOf(cosines, "cosines");
  c.S = ColumnOf(sines, "sines");
  if (correctionCosines.is_none() != correctionSines.is_none())
    throw UserError("GlobalGeoid: a correction needs cosines and sines");
  if (!correctionCosines.is_none()) {
    c.correctionC = ColumnOf(correctionCosines, "correction_cosines");
    c.correctionS = ColumnOf(correctionSines, "correction_sines");
  }
  std::size_t terms = 0;
  while (terms < c.C.size()) terms += static_cast<std::size_t>(++c.degrees);
  const auto whole = [&](const std::vector<double>& column) { return column.size() == terms; };
  if (terms == 0 || !whole(c.C) || !whole(c.S) ||
      (!c.correctionC.empty() && !(whole(c.correctionC) && whole(c.correctionS))))
    throw UserError(
        "GlobalGeoid: the arrays must all have (n + 1)(n + 2)/2 coefficients, n the maximum "
        "degree: degree after degree, in each the orders from 0");
  for (const auto* column : {&c.C, &c.S, &c.correctionC, &c.correctionS})
    if (!std::all_of(column->begin(), column->end(), [](double x) { return std::isfinite(x); }))
      throw UserError("GlobalGeoid: a coefficient is not finite");
  return std::make_shared<GlobalGeoidObject>(std::move(c));
}

std::shared_ptr<GeoidObject> GlobalFromFile(const py::object& path, const py::object& correction,
                                            bool subtractNormalField) {
  return GeoidObjectOf(*Open({"", "", PathOf(path), PathOf(correction), subtractNormalField}));
}

py::tuple StateOf(const GlobalGeoidObject& g) {
  const GeoidCoefficients& c = g.coefficients;
  const auto arrayOrNone = [](const std::vector<double>& column) {
    return column.empty() ? py::object(py::none()) : ArrayOf(column);
  };
  return py::make_tuple(ArrayOf(c.C), ArrayOf(c.S), arrayOrNone(c.correctionC),
                        arrayOrNone(c.correctionS));
}

std::shared_ptr<GlobalGeoidObject> GlobalFromState(const py::tuple& s) {
  return MakeGlobal(s[0], s[1], s[2], s[3]);
}

bool Equal(const GlobalGeoidObject& a, const GlobalGeoidObject& b) {
  const GeoidCoefficients &p = a.coefficients, &q = b.coefficients;
  return p.C == q.C && p.S == q.S && p.correctionC == q.correctionC &&
         p.correctionS == q.correctionS;
}

}  // namespace

GlobalGeoidObject::GlobalGeoidObject(GeoidCoefficients values)
    : coefficients(std::move(values)), model(MakeHarmonicModel(coefficients)), heights(*model) {}

std::shared_ptr<GeoidObject> GeoidObjectOf(const LoadedGeoid& loaded) {
  Warn(loaded.warning);
  if (const GeoidCoefficients* coefficients = loaded.Coefficients())
    return std::make_shared<GlobalGeoidObject>(*coefficients);
  const GeoidGrid& grid = *loaded.Grid();
  return std::make_shared<RegionalGeoidObject>(grid.place, *grid.scheme, grid.nodes);
}

void BindGeoid(py::module_& module) {
  py::class_<GeoidObject, std::shared_ptr<GeoidObject>> geoid(module, "Geoid", R"(
What a CoordinateChain needs of a geoid: RegionalGeoid or GlobalGeoid.)");
  geoid.attr("__module__") = "geomath";
  geoid.def("height", &HeightOf, py::arg("lat"), py::arg("lon"), py::kw_only(),
            py::arg("degrees") = true, py::arg("out") = py::none(),
            R"(height(self, lat, lon, *, degrees=True, out=None)
--

Height of the geoid above the ellipsoid, metres.

lat, lon: degrees, or radians with degrees=False; numbers or arrays, broadcast together. out: a
float64 array for the result. NaN where the model has no height: outside a grid, or at a hole.)");
  geoid.def("deflection", &DeflectionOf, py::arg("lat"), py::arg("lon"), py::arg("h") = 0.0,
            py::kw_only(), py::arg("ellipsoid") = "WGS84", py::arg("degrees") = true,
            py::arg("out") = py::none(),
            R"(deflection(self, lat, lon, h=0.0, *, ellipsoid="WGS84", degrees=True, out=None)
--

Deflection of the vertical at height h over the ellipsoid: (xi, eta), northward and eastward, arc-seconds.

From the slopes of the geoid: the derivatives of a grid's bilinear, biquadratic, convolution and
Lagrange schemes, spline and kriging, else differences over 13 m. Arguments as those of height. NaN
where a height is missing.)");

  py::class_<RegionalGeoidObject, GeoidObject, std::shared_ptr<RegionalGeoidObject>> regional(
      module, "RegionalGeoid", R"(
Geoid heights interpolated in a regular grid of latitude and longitude.

    RegionalGeoid(heights, south=49.0, west=-6.0, lat_step=0.1, lon_step=0.1)

grid: two-dimensional array of heights in metres, NaN for a hole; rows along latitude, from the south
unless north_first, columns from the west. south and west are the position of the southwestern node,
the steps the distances of the nodes, all in degrees. interpolation: the class name of a scheme, see
interpolation_names(); bilinear by default.

The array is copied; a grid around the whole Earth is closed at its seam: `grid` and `west` then show
four columns more on either side. Geoids are immutable, equal when their heights, place and scheme are; pickles
carry the whole grid.

Raises Error for a grid that is not on the Earth or a scheme that does not serve it.)");
  regional.attr("__module__") = "geomath";
  regional
      .def(py::init(&MakeRegional), py::arg("grid"), py::kw_only(), py::arg("south"),
           py::arg("west"), py::arg("lat_step"), py::arg("lon_step"), py::arg("interpolation") = "",
           py::arg("north_first") = false)
      .def_static("from_file", &RegionalFromFile, py::arg("path"), py::arg("interpolation") = "",
                  R"(from_file(path, interpolation="")
--

A grid in a raster format of docs/program/geoid.md, its nodes at the centres of the pixels.

Raises Error when the file holds no grid in latitude and longitude.)")
      .def_property_readonly("grid", &NodesOf,
                             "The heights, in the row order of the scheme; read-only.")
      .def_property_readonly(
          "south", [](const RegionalGeoidObject& g) { return g.place.south; },
          "Latitude of the southernmost nodes, degrees.")
      .def_property_readonly(
          "west", [](const RegionalGeoidObject& g) { return g.place.west; },
          "Longitude of the westernmost nodes, degrees.")
      .def_property_readonly(
          "lat_step", [](const RegionalGeoidObject& g) { return g.place.latStep; },
          "Distance of the rows, degrees.")
      .def_property_readonly(
          "lon_step", [](const RegionalGeoidObject& g) { return g.place.lonStep; },
          "Distance of the columns, degrees.")
      .def_property_readonly(
          "interpolation", [](const RegionalGeoidObject& g) { return g.scheme.name; },
          "The class name of the scheme.")
      .def_property_readonly(
          "north_first", [](const RegionalGeoidObject& g) { return g.scheme.northFirst; },
          "Whether the first row of `grid` is the northernmost.")
      .def("__eq__",
           py::overload_cast<const RegionalGeoidObject&, const RegionalGeoidObject&>(&Equal),
           py::is_operator())
      .def("__hash__",
           [](const RegionalGeoidObject& g) {
             return py::hash(py::make_tuple(g.place.south, g.place.west, g.place.rows,
                                            g.place.columns, g.scheme.name));
           })
      .def("__repr__", &ReprOfRegional);
  DefinePickle(
      regional, [](const std::shared_ptr<RegionalGeoidObject>& g) { return StateOf(g); },
      &RegionalFromState);

  py::class_<GlobalGeoidObject, GeoidObject, std::shared_ptr<GlobalGeoidObject>> global(
      module, "GlobalGeoid", R"(
Geoid heights from a spherical-harmonic model of the gravity potential.

    GlobalGeoid.from_file("model.gfc", subtract_normal_field=True)
    GlobalGeoid(cosines, sines)

cosines, sines: fully normalised coefficients, the normal field of the ellipsoid already subtracted,
in one-dimensional arrays: degree after degree from 0, in each the orders from 0. The correction from
height anomaly to geoid height, in centimetres, has the same form and may be left out. Arrays are
copied. Points that follow each other on one latitude cost a fraction of the others.

Raises Error for arrays whose sizes do not fit.)");
  global.attr("__module__") = "geomath";
  global
      .def(py::init(&MakeGlobal), py::arg("cosines"), py::arg("sines"), py::kw_only(),
           py::arg("correction_cosines") = py::none(), py::arg("correction_sines") = py::none())
      .def_static("from_file", &GlobalFromFile, py::arg("path"), py::kw_only(),
                  py::arg("correction") = py::none(), py::arg("subtract_normal_field") = false,
                  R"(from_file(path, *, correction=None, subtract_normal_field=False)
--

A model from a file of coefficients: lines "n m C S", or an ICGEM .gfc file (docs/program/geoid.md).

correction: a file of the height-anomaly correction, lines "n m C S" in centimetres.
subtract_normal_field takes the even zonal terms of WGS84 from the coefficients; a UserWarning says
when it was forgotten or given needlessly. Raises Error when a file cannot be read.)")
      .def_property_readonly(
          "max_degree", [](const GlobalGeoidObject& g) { return g.coefficients.degrees - 1; },
          "The maximum degree.")
      .def("__eq__", py::overload_cast<const GlobalGeoidObject&, const GlobalGeoidObject&>(&Equal),
           py::is_operator())
      .def("__hash__",
           [](const GlobalGeoidObject& g) {
             return py::hash(py::make_tuple(g.coefficients.degrees, g.coefficients.C.back(),
                                            g.coefficients.S.back()));
           })
      .def("__repr__", [](const GlobalGeoidObject& g) {
        return fmt::format("<GlobalGeoid to degree {}{}>", g.coefficients.degrees - 1,
                           g.coefficients.correctionC.empty() ? "" : ", with a correction");
      });
  DefinePickle(
      global, [](const GlobalGeoidObject& g) { return StateOf(g); }, &GlobalFromState);

  module.def("interpolation_names", &InterpolationNames, R"(interpolation_names()
--

The class names of the schemes that RegionalGeoid knows.)");
}

}  // namespace geomath_python
