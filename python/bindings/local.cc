#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "files/system/system_sections.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_python {
namespace {

using Keywords = std::initializer_list<std::pair<const char*, py::object>>;

// What changes nothing, for the parameters of a part of which only some are given.
void Complete(nlohmann::json& section, int first, int count) {
  const std::string* keys = kLocalizationKeys + first;
  if (std::none_of(keys, keys + count, [&](const auto& key) { return section.contains(key); }))
    return;
  for (const std::string* key = keys; key != keys + count; ++key)
    if (!section.contains(*key)) section[*key] = *key == "scale" ? 1.0 : 0.0;
}

std::shared_ptr<LocalToGrid> MakeSite(const py::object& shiftN, const py::object& shiftE,
                                      const py::object& scale, const py::object& rotation,
                                      const py::object& shiftH, const py::object& slopeN,
                                      const py::object& slopeE) {
  nlohmann::json section = SectionOf(Keywords{{"shiftN", shiftN},
                                              {"shiftE", shiftE},
                                              {"scale", scale},
                                              {"rotation", rotation},
                                              {"shiftH", shiftH},
                                              {"slopeN", slopeN},
                                              {"slopeE", slopeE}});
  nlohmann::json& angle = section["rotation"];
  if (angle.is_null())
    section.erase("rotation");
  else if (angle.is_number())
    angle = angle.get<double>() * kRadPerDeg;
  Complete(section, 0, kPlaneKeys);
  Complete(section, kPlaneKeys, kHeightKeys);
  const std::vector<std::string_view> keys(std::begin(kLocalizationKeys),
                                           std::end(kLocalizationKeys));
  return std::make_shared<LocalToGrid>(
      ReadLocalization(JsonSection("LocalToGrid", "", section, keys, KeySpelling::snake)));
}

using SiteBatch = std::size_t (LocalToGrid::*)(double*, double*, double*, std::size_t, unsigned int,
                                               std::ptrdiff_t) const;

template <SiteBatch batch>
py::object ConvertSite(const LocalToGrid& site, py::object north, py::object east, py::object h,
                       const py::object& out) {
  const std::array<Argument, 3> arguments = {{{"north", north}, {"east", east}, {"h", h}}};
  return ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    double given[3][kBlock];
    for (int i = 0; i < 3; ++i) std::copy_n(c[i], n, given[i]);
    (site.*batch)(c[0], c[1], c[2], n, LocalToGrid::kBoth, 1);
    for (std::size_t i = 0; i < n; ++i) {  // a part that was not calibrated passes unchanged
      if (!std::isfinite(c[0][i])) continue;
      if (site.mode == LocalToGrid::kHorizontal) c[2][i] = given[2][i];
      if (site.mode == LocalToGrid::kVertical) {
        c[0][i] = given[0][i];
        c[1][i] = given[1][i];
      }
    }
  });
}

double ParameterOf(const LocalToGrid& site, int index) {
  return index < kPlaneKeys ? site.GetPlaneParam(index, 0)
                            : site.GetHeightParam(index - kPlaneKeys, 0);
}

py::tuple StateOf(const LocalToGrid& site) {
  py::tuple state(1 + std::size(kLocalizationKeys));
  state[0] = static_cast<int>(site.mode);
  for (std::size_t i = 1; i < state.size(); ++i)
    state[i] = ParameterOf(site, static_cast<int>(i) - 1);
  return state;
}

std::shared_ptr<LocalToGrid> SiteFromState(const py::tuple& state) {
  auto site = std::make_shared<LocalToGrid>();
  site->mode = state[0].cast<unsigned char>();
  if (site->mode > LocalToGrid::kBoth) throw UserError("a calibration has no such parts");
  for (int i = 0; i < kPlaneKeys; ++i)
    site->SetPlaneParam(FiniteOf(state[static_cast<std::size_t>(1 + i)]), i, 0);
  for (int i = 0; i < kHeightKeys; ++i)
    site->SetHeightParam(FiniteOf(state[static_cast<std::size_t>(1 + kPlaneKeys + i)]), i, 0);
  if (site->mode & LocalToGrid::kHorizontal && !(ParameterOf(*site, 2) > 0))
    throw UserError("the scale must be above 0");
  return site;
}

std::string ReprOfSite(const LocalToGrid& site) {
  std::string text;
  for (int i = 0; i < kPlaneKeys + kHeightKeys; ++i) {
    const unsigned char part = i < kPlaneKeys ? LocalToGrid::kHorizontal : LocalToGrid::kVertical;
    if (!(site.mode & part)) continue;
    const std::string& key = kLocalizationKeys[i];
    const double value = ParameterOf(site, i) * (key == "rotation" ? kDegPerRad : 1);
    text += fmt::format("{}{}={}", text.empty() ? "" : ", ", SnakeName(key), NumberText(value));
  }
  return "LocalToGrid(" + text + ")";
}

std::shared_ptr<GridToGround> MakeGround(const py::object& scale, const py::object& height,
                                         const py::object& gridScaleFactor,
                                         const py::object& rotation, const py::object& originN,
                                         const py::object& originE, const py::object& offsetN,
                                         const py::object& offsetE, bool enabled) {
  const nlohmann::json section = SectionOf(Keywords{{"scale", scale},
                                                    {"height", height},
                                                    {"gridScaleFactor", gridScaleFactor},
                                                    {"rotation", rotation},
                                                    {"originN", originN},
                                                    {"originE", originE},
                                                    {"offsetN", offsetN},
                                                    {"offsetE", offsetE},
                                                    {"enabled", py::str(enabled ? "yes" : "no")}});
  return std::make_shared<GridToGround>(
      ReadGround(JsonSection("GridToGround", "", section, kGroundKeys, KeySpelling::snake)));
}

using GroundBatch = std::size_t (GridToGround::*)(double*, double*, std::size_t,
                                                  std::ptrdiff_t) const;

template <GroundBatch batch>
py::object ConvertGround(const GridToGround& ground, py::object north, py::object east,
                         const py::object& out) {
  const std::array<Argument, 2> arguments = {{{"north", north}, {"east", east}}};
  return ConvertColumns<2>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    (ground.*batch)(c[0], c[1], n, 1);
  });
}

constexpr double GridToGround::*kGroundFields[] = {
    &GridToGround::offsetN, &GridToGround::offsetE,        &GridToGround::scale,
    &GridToGround::height,  &GridToGround::rotation,       &GridToGround::originN,
    &GridToGround::originE, &GridToGround::gridScaleFactor};

py::tuple StateOfGround(const GridToGround& ground) {
  py::tuple state(1 + std::size(kGroundFields));
  state[0] = ground.flags;
  for (std::size_t i = 0; i < std::size(kGroundFields); ++i)
    state[1 + i] = ground.*kGroundFields[i];
  return state;
}

std::shared_ptr<GridToGround> GroundFromState(const py::tuple& state) {
  auto ground = std::make_shared<GridToGround>();
  ground->flags = state[0].cast<std::uint32_t>();
  for (std::size_t i = 0; i < std::size(kGroundFields); ++i)
    (*ground).*kGroundFields[i] = FiniteOf(state[1 + i]);
  const bool derived = ground->flags & GridToGround::kDeriveScale;
  if (!((derived ? ground->gridScaleFactor : ground->scale) > 0))
    throw UserError("the scale must be above 0");
  return ground;
}

double ScaleOf(const GridToGround& ground) {
  GridToGround plain = ground;  // without its shifts: the image of one metre
  plain.offsetN = plain.offsetE = plain.rotation = 0;
  plain.flags &= ~GridToGround::kHasOrigin;
  double north = 1, east = 0;
  plain.ToGroundBatch(&north, &east, 1);
  return north;
}

std::string ReprOfGround(const GridToGround& g) {
  std::string text = g.flags & GridToGround::kDeriveScale
                         ? fmt::format("height={}, grid_scale_factor={}", NumberText(g.height),
                                       NumberText(g.gridScaleFactor))
                         : fmt::format("scale={}", NumberText(g.scale));
  const auto add = [&](const char* name, double value) {
    text += fmt::format(", {}={}", name, NumberText(value));
  };
  if (g.rotation != 0) add("rotation", g.rotation * kDegPerRad);
  if (g.flags & GridToGround::kHasOrigin) add("origin_n", g.originN), add("origin_e", g.originE);
  if (g.offsetN != 0 || g.offsetE != 0) add("offset_n", g.offsetN), add("offset_e", g.offsetE);
  return "GridToGround(" + text + (g.IsDisabled() ? ", enabled=False)" : ")");
}

}  // namespace

void BindLocal(py::module_& module) {
  py::class_<LocalToGrid, std::shared_ptr<LocalToGrid>> site(module, "LocalToGrid", R"(
A site calibration: from the grid of a projection to the plane and heights of a local site.

    local north = scale (cos r N - sin r E) + shift_n      local h = h + shift_h + slope_n N + slope_e E
    local east  = scale (sin r N + cos r E) + shift_e

shift_n, shift_e, shift_h: metres; rotation r: degrees; slopes: metres of height a metre of grid
coordinate. A calibration without any of the first four leaves the plane as it is, one without any of
the last three the heights; a parameter that is not given in a part that is changes nothing.

Immutable, equal when the parameters are, can be pickled. Calibration finds one from control points.
Raises Error when nothing is given or the scale is not above 0.)");
  site.attr("__module__") = "geomath";
  site.def(py::init(&MakeSite), py::kw_only(), py::arg("shift_n") = py::none(),
           py::arg("shift_e") = py::none(), py::arg("scale") = py::none(),
           py::arg("rotation") = py::none(), py::arg("shift_h") = py::none(),
           py::arg("slope_n") = py::none(), py::arg("slope_e") = py::none())
      .def_property_readonly(
          "shift_n", [](const LocalToGrid& s) { return ParameterOf(s, 0); },
          "Shift of the northing, metres.")
      .def_property_readonly(
          "shift_e", [](const LocalToGrid& s) { return ParameterOf(s, 1); },
          "Shift of the easting, metres.")
      .def_property_readonly(
          "scale", [](const LocalToGrid& s) { return ParameterOf(s, 2); },
          "Scale from the grid to the site.")
      .def_property_readonly(
          "rotation", [](const LocalToGrid& s) { return ParameterOf(s, 3) * kDegPerRad; },
          "Rotation, degrees.")
      .def_property_readonly(
          "shift_h", [](const LocalToGrid& s) { return ParameterOf(s, 4); },
          "Shift of the heights, metres.")
      .def_property_readonly(
          "slope_n", [](const LocalToGrid& s) { return ParameterOf(s, 5); },
          "Slope along grid north, metres a metre.")
      .def_property_readonly(
          "slope_e", [](const LocalToGrid& s) { return ParameterOf(s, 6); },
          "Slope along grid east, metres a metre.")
      .def_property_readonly(
          "horizontal",
          [](const LocalToGrid& s) { return (s.mode & LocalToGrid::kHorizontal) != 0; },
          "Whether the plane is calibrated.")
      .def_property_readonly(
          "vertical", [](const LocalToGrid& s) { return (s.mode & LocalToGrid::kVertical) != 0; },
          "Whether the heights are calibrated.")
      .def("to_local", &ConvertSite<&LocalToGrid::ToLocalBatch>, py::arg("north"), py::arg("east"),
           py::arg("h") = 0.0, py::kw_only(), py::arg("out") = py::none(),
           R"(to_local(self, north, east, h=0.0, *, out=None)
--

Grid coordinates to those of the site: (north, east, h), metres.

Numbers or arrays, broadcast together. out: three float64 arrays for the results. A point that is not
finite gives NaN in all three.)")
      .def("to_grid", &ConvertSite<&LocalToGrid::ToGridBatch>, py::arg("north"), py::arg("east"),
           py::arg("h") = 0.0, py::kw_only(), py::arg("out") = py::none(),
           R"(to_grid(self, north, east, h=0.0, *, out=None)
--

Coordinates of the site to those of the grid, the inverse of to_local. NaN everywhere when only the
heights are calibrated: their slopes need the position.)")
      .def(
          "__eq__",
          [](const LocalToGrid& a, const LocalToGrid& b) { return StateOf(a).equal(StateOf(b)); },
          py::is_operator())
      .def("__hash__", [](const LocalToGrid& s) { return py::hash(StateOf(s)); })
      .def("__repr__", &ReprOfSite);
  DefinePickle(site, &StateOf, &SiteFromState);

  py::class_<GridToGround, std::shared_ptr<GridToGround>> ground(module, "GridToGround", R"(
A ground system: from grid coordinates to true lengths on the ground of a site.

A rotation and a scale about a grid origin, then a shift; heights are not touched. The scale is given,
or derived from the height of the site and the scale factor of the projection there:
(1 + height/6371000)/grid_scale_factor. origin_n and origin_e, the grid point that is only shifted,
and offset_n and offset_e, the shift, are metres; each pair is given whole or is 0. The rotation is in degrees.

Immutable, equal when the parameters are, can be pickled. Raises Error for a scale that is missing, or
given twice.)");
  ground.attr("__module__") = "geomath";
  ground
      .def(py::init(&MakeGround), py::kw_only(), py::arg("scale") = py::none(),
           py::arg("height") = py::none(), py::arg("grid_scale_factor") = py::none(),
           py::arg("rotation") = py::none(), py::arg("origin_n") = py::none(),
           py::arg("origin_e") = py::none(), py::arg("offset_n") = py::none(),
           py::arg("offset_e") = py::none(), py::arg("enabled") = true)
      .def_property_readonly("scale", &ScaleOf, "Scale from the grid to the ground.")
      .def_property_readonly(
          "rotation", [](const GridToGround& g) { return g.rotation * kDegPerRad; },
          "Rotation about the origin, degrees.")
      .def_property_readonly(
          "origin", [](const GridToGround& g) { return py::make_tuple(g.FNgrid(), g.FEgrid()); },
          "North and east of the grid point that only shifts, metres.")
      .def_property_readonly(
          "offset", [](const GridToGround& g) { return py::make_tuple(g.offsetN, g.offsetE); },
          "Shift of north and east, metres.")
      .def_property_readonly(
          "enabled", [](const GridToGround& g) { return !g.IsDisabled(); },
          "Whether a chain uses it; to_ground and to_grid do in any case.")
      .def("to_ground", &ConvertGround<&GridToGround::ToGroundBatch>, py::arg("north"),
           py::arg("east"), py::kw_only(), py::arg("out") = py::none(),
           R"(to_ground(self, north, east, *, out=None)
--

Grid to ground coordinates: (north, east), metres.

Numbers or arrays, broadcast together. out: two float64 arrays for the results. A point that is not
finite gives NaN in both.)")
      .def("to_grid", &ConvertGround<&GridToGround::ToGridBatch>, py::arg("north"), py::arg("east"),
           py::kw_only(), py::arg("out") = py::none(),
           R"(to_grid(self, north, east, *, out=None)
--

Ground to grid coordinates, the inverse of to_ground.)")
      .def(
          "__eq__",
          [](const GridToGround& a, const GridToGround& b) {
            return StateOfGround(a).equal(StateOfGround(b));
          },
          py::is_operator())
      .def("__hash__", [](const GridToGround& g) { return py::hash(StateOfGround(g)); })
      .def("__repr__", &ReprOfGround);
  DefinePickle(ground, &StateOfGround, &GroundFromState);
}

}  // namespace geomath_python
