#include <fmt/format.h>
#include <pybind11/stl.h>

#include <cmath>

#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/geodesic/distortion.h"
#include "python/bindings/columns.h"
#include "python/bindings/epsg.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_python {
namespace {

constexpr unsigned int kToInternal = 1;

std::wstring Widen(const std::string& text) { return {text.begin(), text.end()}; }

std::string AxesOf(const nlohmann::json& keywords, const char* key) {
  const AxisText* axes =
      ReadAxisPair(JsonSection("Projection", "", keywords, {"grid_axes", "geographic_axes"}), key);
  return axes ? axes->text : kNorthEast;
}

std::shared_ptr<ProjectionObject> Make(const py::object& name, const py::object& ellipsoid,
                                       const py::object& gridAxes, const py::object& geographicAxes,
                                       const py::kwargs& parameters) {
  nlohmann::json section = SectionOf(parameters);
  section["name"] = SectionOf({{"name", name}})["name"];
  const auto on = EllipsoidFrom(ellipsoid);
  NamedProjection read =
      ReadProjection({"Projection", "", section, KeySpelling::snake}, on->a, on->invF);
  const auto axes = SectionOf({{"grid_axes", gridAxes}, {"geographic_axes", geographicAxes}});
  return std::make_shared<ProjectionObject>(*read.kind, std::move(read.values), on->a, on->invF,
                                            AxesOf(axes, "grid_axes"),
                                            AxesOf(axes, "geographic_axes"));
}

std::shared_ptr<ProjectionObject> FromEpsg(int code) {
  return ProjectionObjectOf(*SystemOfEpsg(code, {.datum = false}));
}

py::object Forward(const ProjectionObject& p, py::object lat, py::object lon, bool degrees,
                   const py::object& out) {
  const auto arguments = PositionArguments(lat, lon, AxisPairOf(p.geographicAxes), degrees);
  return ConvertColumns<2>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    p.projection->ForwardBatch(c[0], c[1], n);
  });
}

py::object Inverse(const ProjectionObject& p, py::object north, py::object east, bool degrees,
                   const py::object& out) {
  const std::array<Argument, 2> arguments = {{{"north", north}, {"east", east}}};
  return ConvertColumns<2>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    p.projection->InverseBatch(c[0], c[1], n);
    DropBeyondTheMap(c, 2, n);
    if (degrees) Multiply(c[0], n, kDegPerRad), Multiply(c[1], n, kDegPerRad);
  });
}

py::object FactorsOf(const ProjectionObject& p, py::object lat, py::object lon, bool degrees,
                     const py::object& out) {
  const auto arguments = PositionArguments(lat, lon, AxisPairOf(p.geographicAxes), degrees);
  return ConvertColumns<2>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    p.projection->RotateBLBatch(kToInternal, c[0], c[1], n);
    for (std::size_t i = 0; i < n; ++i) {
      const PointFactors factors = FactorsAt(*p.projection, c[0][i], c[1][i]);
      c[0][i] = factors.scale;
      c[1][i] = factors.convergence;
    }
    if (degrees) Multiply(c[1], n, kDegPerRad);
  });
}

// Members in the order of the class Distortion of Python.
constexpr double Distortion::*kDistortion[] = {
    &Distortion::meridianScale, &Distortion::parallelScale,     &Distortion::arealScale,
    &Distortion::convergence,   &Distortion::angularDistortion, &Distortion::semiMajor,
    &Distortion::semiMinor};
constexpr std::size_t kDistortionCount = std::size(kDistortion);

using DistortColumns = std::size_t (*)(const TGeoProj&, const double*, const double*, Distortion*,
                                       std::size_t);

py::object Distort(const ProjectionObject& p, const std::array<Argument, 2>& arguments,
                   bool degrees, DistortColumns distort,
                   void (TGeoProj::*rotate)(unsigned int, double*, double*, std::size_t) const) {
  const py::object all = ConvertColumns<kDistortionCount>(
      arguments, py::none(), [&](double* const* c, std::size_t, std::size_t n) {
        Distortion distortions[kBlock];
        (*p.projection.*rotate)(kToInternal, c[0], c[1], n);
        distort(*p.projection, c[0], c[1], distortions, n);
        for (std::size_t k = 0; k < kDistortionCount; ++k)
          for (std::size_t i = 0; i < n; ++i) c[k][i] = distortions[i].*kDistortion[k];
        constexpr std::size_t kConvergence = 3, kAngular = 4;
        if (degrees) Multiply(c[kConvergence], n, kDegPerRad), Multiply(c[kAngular], n, kDegPerRad);
      });
  return py::module_::import("geomath").attr("Distortion")(*py::tuple(all));
}

py::object DistortionOf(const ProjectionObject& p, py::object lat, py::object lon, bool degrees) {
  return Distort(p, PositionArguments(lat, lon, AxisPairOf(p.geographicAxes), degrees), degrees,
                 &DistortionAt, &TGeoProj::RotateBLBatch);
}

py::object GridDistortionOf(const ProjectionObject& p, py::object north, py::object east,
                            bool degrees) {
  return Distort(p, {{{"north", north}, {"east", east}}}, degrees, &DistortionAtGrid,
                 &TGeoProj::RotateNEBatch);
}

py::dict ParametersOf(const ProjectionObject& p) {
  py::dict parameters;
  for (std::size_t i = 0; i < p.values.size(); ++i)
    parameters[py::str(SnakeName(p.kind.parameters[i].name))] = p.values[i];
  return parameters;
}

py::tuple StateOf(const ProjectionObject& p) {
  return py::make_tuple(p.kind.name, py::tuple(py::cast(p.values)), p.a, p.invF, p.gridAxes,
                        p.geographicAxes);
}

// Read as a projection that is made: a state holds the same values.
std::shared_ptr<ProjectionObject> FromState(const py::tuple& state) {
  const auto name = state[0].cast<std::string>();
  const auto values = state[1].cast<std::vector<double>>();
  const double a = state[2].cast<double>(), invF = state[3].cast<double>();
  const nlohmann::json on = std::isinf(invF) ? nlohmann::json{{"a", a}, {"b", a}}
                                             : nlohmann::json{{"a", a}, {"invF", invF}};
  ReadEllipsoid(JsonSection("the ellipsoid", "", on, kEllipsoidKeys));
  nlohmann::json section = {{"name", name}};
  if (const ProjectionKind* kind = FindProjection(name)) {
    if (values.size() != kind->parameters.size())
      throw UserError("the parameters are not those of the projection");
    for (std::size_t i = 0; i < values.size(); ++i) section[kind->parameters[i].name] = values[i];
  }
  NamedProjection read =
      ReadProjection({"the projection", "", section, KeySpelling::exact}, a, invF);
  const nlohmann::json axes = {{"grid_axes", state[4].cast<std::string>()},
                               {"geographic_axes", state[5].cast<std::string>()}};
  return std::make_shared<ProjectionObject>(*read.kind, std::move(read.values), a, invF,
                                            AxesOf(axes, "grid_axes"),
                                            AxesOf(axes, "geographic_axes"));
}

std::string Repr(const ProjectionObject& p) {
  std::string text = fmt::format("Projection('{}', ", p.kind.name);
  for (const auto& [name, value] : ParametersOf(p))
    text += fmt::format("{}={}, ", std::string(py::str(name)), std::string(py::repr(value)));
  text += fmt::format("ellipsoid=Ellipsoid({}, {})", NumberText(p.a), NumberText(p.invF));
  if (p.gridAxes != kNorthEast) text += fmt::format(", grid_axes='{}'", p.gridAxes);
  if (p.geographicAxes != kNorthEast)
    text += fmt::format(", geographic_axes='{}'", p.geographicAxes);
  return text + ")";
}

py::dict Projections() {
  py::dict all;
  for (const ProjectionKind& kind : ProjectionKinds()) {
    py::dict parameters;
    for (const ProjectionParameter& parameter : kind.parameters) {
      const std::string unit = UnitName(parameter.unit);
      parameters[py::str(SnakeName(parameter.name))] =
          unit.empty() ? parameter.quantity : parameter.quantity + ", " + unit;
    }
    all[py::str(kind.name)] = parameters;
  }
  return all;
}

}  // namespace

ProjectionObject::ProjectionObject(const ProjectionKind& its, std::vector<double> parameters,
                                   double axis, double inverseFlattening, std::string grid,
                                   std::string geographic)
    : kind(its),
      values(std::move(parameters)),
      a(axis),
      invF(inverseFlattening),
      gridAxes(std::move(grid)),
      geographicAxes(std::move(geographic)),
      projection(MakeProjection(kind, a, invF, values)) {
  // Axes that are set cost time, even if they turn nothing.
  if (gridAxes != kNorthEast) projection->SetNEAxes(Widen(gridAxes).c_str());
  if (geographicAxes != kNorthEast) projection->SetBLAxes(Widen(geographicAxes).c_str());
}

void BindProjection(py::module_& module) {
  py::class_<ProjectionObject, std::shared_ptr<ProjectionObject>> projection(module, "Projection",
                                                                             R"(
A map projection on an ellipsoid, by its short name and parameters.

    Projection("LC", south_lat=33, north_lat=45, lon0=-96, lat0=23, east0=0, north0=0, scale=1)

projections() lists the names with their parameters, all of which are needed; angles are decimal
degrees and lengths metres. ellipsoid: an Ellipsoid or the name of one; a few kinds have one built in
and ignore it. grid_axes and geographic_axes say in which directions the two coordinates of a pair
count, such as "NE", "EN" or "SW": pairs are then given and taken in that order and with those signs.

Projections are immutable, equal when kind, parameters, ellipsoid and axes are, and can be pickled.
Any number of threads may use one. Raises Error for unknown names and values out of range.)");
  projection.attr("__module__") = "geomath";
  projection
      .def(py::init(&Make), py::arg("name"), py::arg("ellipsoid") = "WGS84", py::kw_only(),
           py::arg("grid_axes") = py::none(), py::arg("geographic_axes") = py::none())
      .def_static("from_epsg", &FromEpsg, py::arg("code"), R"(from_epsg(code)
--

The projection of a projected system of the EPSG registry, from PROJ's database on this machine:
positions are those of the system's own datum, coordinates metres whatever unit the registry has.

Raises Error for a code that the registry does not have or that no kind of projection is.)")
      .def_property_readonly(
          "name", [](const ProjectionObject& p) { return p.kind.name; }, "The short name.")
      .def_property_readonly("parameters", &ParametersOf,
                             "A dict of the parameters: degrees, metres, factors.")
      .def_property_readonly(
          "ellipsoid",
          [](const ProjectionObject& p) {
            return std::make_shared<Ellipsoid>(p.projection->GetEllipsoid());
          },
          "The ellipsoid in use.")
      .def_readonly("grid_axes", &ProjectionObject::gridAxes,
                    "Directions of the grid pair; \"NE\" means (north, east).")
      .def_readonly("geographic_axes", &ProjectionObject::geographicAxes,
                    "Directions of the geographic pair; \"NE\" means (latitude, longitude).")
      .def("forward", &Forward, py::arg("lat"), py::arg("lon"), py::kw_only(),
           py::arg("degrees") = true, py::arg("out") = py::none(),
           R"(forward(self, lat, lon, *, degrees=True, out=None)
--

Latitude and longitude to the grid: (north, east), metres.

lat, lon: degrees, or radians with degrees=False; numbers or arrays, broadcast together. out: two
float64 arrays for the results. A point outside the domain of the projection gives NaN in both. With
other axes both pairs stand in the order of their axes.)")
      .def("inverse", &Inverse, py::arg("north"), py::arg("east"), py::kw_only(),
           py::arg("degrees") = true, py::arg("out") = py::none(),
           R"(inverse(self, north, east, *, degrees=True, out=None)
--

Grid coordinates to (lat, lon): degrees, or radians with degrees=False.

north, east: metres, numbers or arrays, broadcast together. out: two float64 arrays for the results.
A point that has no position, or one more than a full turn away, gives NaN in both.)")
      .def("factors", &FactorsOf, py::arg("lat"), py::arg("lon"), py::kw_only(),
           py::arg("degrees") = true, py::arg("out") = py::none(),
           R"(factors(self, lat, lon, *, degrees=True, out=None)
--

Point scale factor and meridian convergence at a position: (scale, convergence).

lat, lon and the convergence: degrees, or radians with degrees=False. Azimuth = bearing + convergence.
Where scale differs with the direction, it is the root of the areal scale. NaN where the projection
does not convert the point. distortion() gives everything else.)")
      .def("distortion", &DistortionOf, py::arg("lat"), py::arg("lon"), py::kw_only(),
           py::arg("degrees") = true,
           R"(distortion(self, lat, lon, *, degrees=True)
--

What the projection does to lengths, angles and areas at a position, as Distortion.

lat, lon and the angles: degrees, or radians with degrees=False; numbers or arrays, broadcast
together. From the derivatives of the formulas themselves. NaN where the projection does not convert
the point, and at the poles.)")
      .def("grid_distortion", &GridDistortionOf, py::arg("north"), py::arg("east"), py::kw_only(),
           py::arg("degrees") = true,
           R"(grid_distortion(self, north, east, *, degrees=True)
--

The same at a position in the grid, metres, in the order of the grid's axes.)")
      .def(
          "__eq__",
          [](const ProjectionObject& a, const ProjectionObject& b) {
            return StateOf(a).equal(StateOf(b));
          },
          py::is_operator())
      .def("__hash__", [](const ProjectionObject& p) { return py::hash(StateOf(p)); })
      .def("__repr__", &Repr);
  DefinePickle(projection, &StateOf, &FromState);

  module.def("projections", &Projections, R"(projections()
--

The projections by name: a dict of dicts, from the name of each parameter to what it is and its unit.)");
}

}  // namespace geomath_python
