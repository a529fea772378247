#include "geomath/geodesic/geodesic.h"

#include <fmt/format.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/geodesic/grid_line.h"
#include "geomath/geodesic/traverse.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using geomath_files::AngleKind;
using geomath_files::UserError;

namespace geomath_python {
namespace {

struct GeodesicObject {
  std::shared_ptr<Ellipsoid> ellipsoid;
  Geodesic geodesic;  // on that ellipsoid
};

struct LinesObject {
  std::shared_ptr<ProjectionObject> projection;
  std::shared_ptr<GeoidObject> geoid;  // may be null
  GridLines lines;                     // of the two
};

}  // namespace

template <>
inline constexpr bool kBound<GeodesicObject> = true;
template <>
inline constexpr bool kBound<LinesObject> = true;

namespace {

constexpr unsigned int kToUser = 0, kToInternal = 1;

double AngleUnit(bool degrees) { return degrees ? kRadPerDeg : 1; }

Argument Azimuth(const char* name, py::object value, bool degrees) {
  return {name, std::move(value), AngleUnit(degrees)};
}

// ---- geodesics ----

std::shared_ptr<GeodesicObject> MakeGeodesic(const py::object& ellipsoid) {
  const auto on = EllipsoidFrom(ellipsoid);
  return std::make_shared<GeodesicObject>(GeodesicObject{on, Geodesic(*on)});
}

py::object Inverse(const GeodesicObject& g, py::object lat1, py::object lon1, py::object lat2,
                   py::object lon2, bool degrees, const py::object& out) {
  const std::array<Argument, 4> arguments = {
      AngleArgument("lat1", lat1, AngleKind::latitude, degrees),
      AngleArgument("lon1", lon1, AngleKind::longitude, degrees),
      AngleArgument("lat2", lat2, AngleKind::latitude, degrees),
      AngleArgument("lon2", lon2, AngleKind::longitude, degrees)};
  return ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    g.geodesic.InverseBatch(c[0], c[1], c[2], c[3], c[0], c[1], c[2], n);
    if (degrees) Multiply(c[1], n, kDegPerRad), Multiply(c[2], n, kDegPerRad);
  });
}

py::object Direct(const GeodesicObject& g, py::object lat, py::object lon, py::object azimuth,
                  py::object distance, bool degrees, const py::object& out) {
  const std::array<Argument, 4> arguments = {
      AngleArgument("lat", lat, AngleKind::latitude, degrees),
      AngleArgument("lon", lon, AngleKind::longitude, degrees),
      Azimuth("azimuth", azimuth, degrees),
      {"distance", distance}};
  return ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    g.geodesic.DirectBatch(c[0], c[1], c[2], c[3], c[0], c[1], c[2], n);
    for (int column = 0; column < 3 && degrees; ++column) Multiply(c[column], n, kDegPerRad);
  });
}

// Two columns of one length, in the units of the library.
std::array<std::vector<double>, 2> ReadColumns(const std::array<Argument, 2>& arguments) {
  std::vector<ArrayReader> readers(arguments.begin(), arguments.end());
  const Shape shape = BroadcastShape(arguments, readers);
  if (shape.size() != 1)
    throw UserError(fmt::format("{} and {} must be one-dimensional arrays", arguments[0].name,
                                arguments[1].name));
  std::array<std::vector<double>, 2> columns;
  for (std::size_t c = 0; c < 2; ++c) {
    columns[c].resize(static_cast<std::size_t>(shape[0]));
    readers[c].Start(shape);
    readers[c].Read(columns[c].data(), columns[c].size());
  }
  return columns;
}

py::tuple Area(const GeodesicObject& g, py::object lat, py::object lon, bool degrees) {
  const auto [b, l] = ReadColumns({AngleArgument("lat", lat, AngleKind::latitude, degrees),
                                   AngleArgument("lon", lon, AngleKind::longitude, degrees)});
  const py::gil_scoped_release unlocked;
  const GeodesicPolygon polygon = g.geodesic.Area(b.data(), l.data(), b.size());
  const py::gil_scoped_acquire locked;
  return py::make_tuple(polygon.area, polygon.perimeter);
}

// Parts of a line: as given, or as many as keep within the spacing.
std::size_t PartsOf(double distance, const std::optional<int>& count,
                    const std::optional<double>& spacing) {
  constexpr double kMostParts = 1e7;
  if (count.has_value() == spacing.has_value())
    throw UserError("line: give either count or spacing");
  if (count && *count < 2) throw UserError("line: count must be 2 at least, the ends");
  if (spacing && !(*spacing > 0)) throw UserError("line: spacing must be a length");
  const double parts = count ? *count - 1 : std::max(1.0, std::ceil(distance / *spacing));
  if (!(parts <= kMostParts)) throw UserError("line: too many points");
  return static_cast<std::size_t>(parts);
}

py::tuple Line(const GeodesicObject& g, double lat1, double lon1, double lat2, double lon2,
               const std::optional<int>& count, const std::optional<double>& spacing,
               bool degrees) {
  const double unit = AngleUnit(degrees);
  const double b1 = lat1 * unit, l1 = lon1 * unit;
  const GeodesicMeasure measured = g.geodesic.Inverse(b1, l1, lat2 * unit, lon2 * unit);
  if (std::isnan(measured.distance)) throw UserError("line: an end has no position on the Earth");
  const std::size_t parts = PartsOf(measured.distance, count, spacing);
  const GeodesicLine line = g.geodesic.Line(b1, l1, measured.azimuth);
  std::vector<double> lat(parts + 1, lat1), lon(parts + 1, lon1);
  for (std::size_t i = 1; i < parts; ++i) {
    const double share = static_cast<double>(i) / static_cast<double>(parts);
    const GeodesicEnd at = line.At(measured.distance * share);
    lat[i] = at.b / unit;
    lon[i] = at.l / unit;
  }
  lat.back() = lat2;
  lon.back() = lon2;
  return py::make_tuple(ArrayOf(lat), ArrayOf(lon));
}

// ---- lines in a grid ----

std::shared_ptr<LinesObject> MakeLines(std::shared_ptr<ProjectionObject> projection,
                                       std::shared_ptr<GeoidObject> geoid) {
  if (!projection) throw py::type_error("GridLines: projection must be a Projection");
  const GridLines lines(*projection->projection, geoid ? &geoid->Heights() : nullptr);
  return std::make_shared<LinesObject>(LinesObject{std::move(projection), std::move(geoid), lines});
}

// Fields in the order of the class GridLine of Python, and which of them are angles.
struct LineField {
  double GridLine::*value;
  bool isAngle = false;
};
constexpr LineField kLineFields[] = {{&GridLine::gridDistance},
                                     {&GridLine::gridBearing, true},
                                     {&GridLine::geodesicDistance},
                                     {&GridLine::azimuth, true},
                                     {&GridLine::backAzimuth, true},
                                     {&GridLine::scale1},
                                     {&GridLine::scale2},
                                     {&GridLine::convergence1, true},
                                     {&GridLine::convergence2, true},
                                     {&GridLine::arcToChord1, true},
                                     {&GridLine::arcToChord2, true},
                                     {&GridLine::lineScale},
                                     {&GridLine::elevationFactor},
                                     {&GridLine::combinedFactor},
                                     {&GridLine::groundDistance},
                                     {&GridLine::slopeDistance},
                                     {&GridLine::height1},
                                     {&GridLine::height2}};
constexpr std::size_t kLineCount = std::size(kLineFields);

py::object Named(const char* name, const py::tuple& values) {
  return py::module_::import("geomath").attr(name)(*values);
}

std::array<Argument, 6> LineArguments(py::object north1, py::object east1, py::object north2,
                                      py::object east2, py::object h1, py::object h2) {
  return {{{"north1", north1},
           {"east1", east1},
           {"north2", north2},
           {"east2", east2},
           {"h1", h1},
           {"h2", h2}}};
}

py::object Between(const LinesObject& object, py::object north1, py::object east1,
                   py::object north2, py::object east2, py::object h1, py::object h2,
                   bool degrees) {
  const std::array<Argument, 6> arguments = LineArguments(north1, east1, north2, east2, h1, h2);
  const TGeoProj& projection = *object.projection->projection;
  const py::object reduced = ConvertColumns<kLineCount>(
      arguments, py::none(), [&](double* const* c, std::size_t, std::size_t n) {
        projection.RotateNEBatch(kToInternal, c[0], c[1], n);
        projection.RotateNEBatch(kToInternal, c[2], c[3], n);
        constexpr std::size_t kLines = 64;
        for (std::size_t start = 0, size; start < n; start += size) {
          size = std::min(kLines, n - start);
          GridPoint from[kLines], to[kLines];
          GridLine lines[kLines];
          for (std::size_t i = 0; i < size; ++i) {
            from[i] = {c[0][start + i], c[1][start + i], c[4][start + i]};
            to[i] = {c[2][start + i], c[3][start + i], c[5][start + i]};
          }
          object.lines.Between(from, to, lines, size);
          for (std::size_t k = 0; k < kLineCount; ++k) {
            const double unit = kLineFields[k].isAngle && degrees ? kDegPerRad : 1;
            for (std::size_t i = 0; i < size; ++i)
              c[k][start + i] = lines[i].*kLineFields[k].value * unit;
          }
        }
      });
  return Named("GridLine", reduced);
}

py::object Plumb(const LinesObject& object, py::object north1, py::object east1, py::object north2,
                 py::object east2, py::object h1, py::object h2) {
  if (!object.geoid) throw UserError("plumb: the lines have no geoid whose slopes are asked for");
  const std::array<Argument, 6> arguments = LineArguments(north1, east1, north2, east2, h1, h2);
  const TGeoProj& projection = *object.projection->projection;
  const py::object found =
      ConvertColumns<5>(arguments, py::none(), [&](double* const* c, std::size_t, std::size_t n) {
        projection.RotateNEBatch(kToInternal, c[0], c[1], n);
        projection.RotateNEBatch(kToInternal, c[2], c[3], n);
        for (std::size_t i = 0; i < n; ++i) {
          constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
          PlumbLine p;
          if (!object.lines.PlumbAt({c[0][i], c[1][i], c[4][i]}, {c[2][i], c[3][i], c[5][i]}, p))
            p = {{kNone, kNone}, kNone, kNone, kNone, kNone};
          const double values[] = {p.deflection.xi, p.deflection.eta, p.azimuthCorrection,
                                   p.directionCorrection, p.zenithCorrection};
          for (std::size_t k = 0; k < 5; ++k) c[k][i] = values[k] / kRadPerArcSecond;
        }
      });
  return Named("PlumbLine", found);
}

// ---- traverses ----

// A station as a tuple of two or three numbers.
GridPoint StationOf(const TGeoProj& projection, const char* name,
                    const std::vector<double>& given) {
  if (given.size() != 2 && given.size() != 3)
    throw UserError(fmt::format("traverse: {} must be (north, east) or (north, east, h)", name));
  GridPoint station{given[0], given[1], given.size() == 3 ? given[2] : 0};
  projection.RotateNE(kToInternal, station.n, station.e);
  return station;
}

using Given = std::optional<std::vector<double>>;

// The azimuth at a station of a mark, given as such or by the mark's position.
std::optional<double> AzimuthOf(const LinesObject& object, const GridPoint& station,
                                const char* name, const std::optional<double>& azimuth,
                                const char* markName, const Given& mark, double unit) {
  if (azimuth && mark)
    throw UserError(fmt::format("traverse: {} and {} say the same; give one", name, markName));
  if (azimuth) return *azimuth * unit;
  if (!mark) return std::nullopt;
  const GridPoint at = StationOf(*object.projection->projection, markName, *mark);
  const double found = object.lines.AzimuthTo(station, at);
  if (std::isnan(found))
    throw UserError(fmt::format("traverse: {} has no position in the grid", markName));
  return found;
}

template <class Value, std::size_t N>
Value ValueOf(const char* what, const std::string& name,
              const std::pair<const char*, Value> (&values)[N]) {
  std::string known;
  for (const auto& [each, value] : values) {
    if (name == each) return value;
    known += fmt::format("{}\"{}\"", known.empty() ? "" : ", ", each);
  }
  throw UserError(fmt::format("traverse: {} is none of {}", what, known));
}

py::object ComputeTraverse(const LinesObject& object, const std::vector<double>& start,
                           py::object angles, py::object distances, const py::object& heights,
                           const Given& backsight, const std::optional<double>& startAzimuth,
                           const Given& end, const Given& foresight,
                           const std::optional<double>& endAzimuth,
                           const std::optional<double>& endAngle, const std::string& kind,
                           const std::string& adjustment, double sigmaSeconds, double sigmaDistance,
                           double sigmaPerMetre, bool deflections, bool degrees) {
  static constexpr std::pair<const char*, TraverseDistance> kKinds[] = {
      {"slope", TraverseDistance::slope},
      {"ground", TraverseDistance::ground},
      {"geodesic", TraverseDistance::geodesic},
      {"grid", TraverseDistance::grid}};
  static constexpr std::pair<const char*, TraverseAdjustment> kAdjustments[] = {
      {"none", TraverseAdjustment::none},
      {"bowditch", TraverseAdjustment::bowditch},
      {"least-squares", TraverseAdjustment::leastSquares}};
  const TGeoProj& projection = *object.projection->projection;
  const double unit = AngleUnit(degrees);

  TraverseField field;
  field.kind = ValueOf("kind", kind, kKinds);
  field.start = StationOf(projection, "start", start);
  const auto azimuth =
      AzimuthOf(object, field.start, "start_azimuth", startAzimuth, "backsight", backsight, unit);
  if (!azimuth) throw UserError("traverse: give start_azimuth or backsight");
  field.startAzimuth = *azimuth;
  const auto [turned, measured] =
      ReadColumns({Azimuth("angles", angles, degrees), {"distances", distances}});
  const py::object level = heights.is_none() ? py::object(py::float_(field.start.h)) : heights;
  const auto stationHeights = ReadColumns({{{"heights", level}, {"distances", distances}}})[0];
  if (stationHeights.size() != measured.size())
    throw UserError("traverse: heights must have one value for each leg");
  for (std::size_t i = 0; i < measured.size(); ++i)
    field.legs.push_back({turned[i], measured[i], stationHeights[i]});
  if (end) field.end = StationOf(projection, "end", *end);
  if (foresight && !field.end) throw UserError("traverse: foresight is seen from end; give it too");
  if (endAngle) field.endAngle = *endAngle * unit;
  field.endAzimuth = AzimuthOf(object, field.end.value_or(GridPoint{0, 0}), "end_azimuth",
                               endAzimuth, "foresight", foresight, unit);
  if (field.endAngle.has_value() != field.endAzimuth.has_value())
    throw UserError("traverse: end_angle and end_azimuth (or foresight) belong together");
  field.sigmaAngle = sigmaSeconds * kRadPerArcSecond;
  field.sigmaDistance = sigmaDistance;
  field.sigmaPerMetre = sigmaPerMetre;
  field.deflections = deflections;
  if (deflections && !object.geoid)
    throw UserError("traverse: the lines have no geoid whose slopes are the deflections");

  TraverseResult result;
  const TraverseAdjustment wanted = ValueOf("adjustment", adjustment, kAdjustments);
  if (wanted != TraverseAdjustment::none && !field.end)
    throw UserError("traverse: an adjustment needs a known end");
  if (!Traverse(object.lines).Compute(field, wanted, result))
    throw UserError(
        "traverse: it cannot be computed: a station has no position in the grid, or a distance is "
        "not positive or shorter than the difference of its heights");

  std::vector<double> north, east, h;
  for (GridPoint station : result.stations) {
    projection.RotateNE(kToUser, station.n, station.e);
    north.push_back(station.n), east.push_back(station.e), h.push_back(station.h);
  }
  for (double& correction : result.angleCorrections) correction /= unit;
  double misN = result.misclosureN, misE = result.misclosureE, zeroN = 0, zeroE = 0;
  projection.RotateNE(kToUser, misN, misE);
  projection.RotateNE(kToUser, zeroN, zeroE);
  return Named("TraverseResult",
               py::make_tuple(ArrayOf(north), ArrayOf(east), ArrayOf(h), result.length,
                              misN - zeroN, misE - zeroE, result.misclosureAngle / unit,
                              result.relativeMisclosure, ArrayOf(result.angleCorrections),
                              ArrayOf(result.distanceCorrections), result.sigma0));
}

py::tuple StateOf(const GeodesicObject& g) { return py::make_tuple(g.ellipsoid); }
py::tuple StateOf(const LinesObject& l) { return py::make_tuple(l.projection, l.geoid); }

template <class Class, class Object>
void DefineComparison(Class& of, const Object*) {
  of.attr("__module__") = "geomath";
  of.def(
        "__eq__", [](const Object& a, const Object& b) { return StateOf(a).equal(StateOf(b)); },
        py::is_operator())
      .def("__hash__", [](const Object& o) { return py::hash(StateOf(o)); });
}

void BindGeodesics(py::module_& module) {
  py::class_<GeodesicObject, std::shared_ptr<GeodesicObject>> geodesic(module, "Geodesic", R"(
Shortest lines on an ellipsoid: their lengths, directions, ends and areas.

    distance, azimuth, back_azimuth = Geodesic("GRS80").inverse(-37.95, 144.42, -37.65, 143.93)

Method: Karney 2013, good to 15 nanometres on every ellipsoid of the Earth and for every pair of
points. Azimuths are clockwise from north in [0, 360); back_azimuth looks from the second point to the
first. Immutable, and safe for any number of threads. ellipsoid: an Ellipsoid or the name of one.)");
  geodesic.def(py::init(&MakeGeodesic), py::arg("ellipsoid") = "WGS84")
      .def_readonly("ellipsoid", &GeodesicObject::ellipsoid, "The ellipsoid.")
      .def("inverse", &Inverse, py::arg("lat1"), py::arg("lon1"), py::arg("lat2"), py::arg("lon2"),
           py::kw_only(), py::arg("degrees") = true, py::arg("out") = py::none(),
           R"(inverse(self, lat1, lon1, lat2, lon2, *, degrees=True, out=None)
--

The line between two positions: (distance, azimuth, back_azimuth), metres and degrees.

Numbers or arrays, broadcast together; radians with degrees=False. out: three float64 arrays for the
results. What is no position gives NaN.)")
      .def("direct", &Direct, py::arg("lat"), py::arg("lon"), py::arg("azimuth"),
           py::arg("distance"), py::kw_only(), py::arg("degrees") = true,
           py::arg("out") = py::none(),
           R"(direct(self, lat, lon, azimuth, distance, *, degrees=True, out=None)
--

Where one arrives from a position: (lat, lon, back_azimuth), the longitude within 180 degrees.

distance: metres, behind the position where it is negative. Numbers or arrays, broadcast together;
radians with degrees=False. out: three float64 arrays for the results. What is no position gives NaN.)")
      .def("line", &Line, py::arg("lat1"), py::arg("lon1"), py::arg("lat2"), py::arg("lon2"),
           py::kw_only(), py::arg("count") = py::none(), py::arg("spacing") = py::none(),
           py::arg("degrees") = true,
           R"(line(self, lat1, lon1, lat2, lon2, *, count=None, spacing=None, degrees=True)
--

Points of the line between two positions, both ends among them: (lat, lon), arrays.

count: of the points, equally spaced; or spacing: metres, which two neighbours do not exceed. Raises
Error when an end is no position.)")
      .def("area", &Area, py::arg("lat"), py::arg("lon"), py::kw_only(), py::arg("degrees") = true,
           R"(area(self, lat, lon, *, degrees=True)
--

The polygon of such lines: (area, perimeter), square metres and metres.

lat, lon: arrays of its corners, each once, in order; the area is positive when they run
counter-clockwise. It may enclose a pole or cross the 180th meridian. NaN when a corner is no position.)")
      .def("__repr__", [](const GeodesicObject& g) {
        return fmt::format("Geodesic({})", std::string(py::repr(py::cast(g.ellipsoid))));
      });
  DefineComparison(geodesic, static_cast<GeodesicObject*>(nullptr));
  DefinePickle(
      geodesic, [](const GeodesicObject& g) { return StateOf(g); },
      +[](const py::tuple& state) { return MakeGeodesic(py::cast(PartOf<Ellipsoid>(state[0]))); });
}

}  // namespace

void BindGeodesic(py::module_& module) {
  BindGeodesics(module);
  py::class_<LinesObject, std::shared_ptr<LinesObject>> lines(module, "GridLines", R"(
Lines between positions in the grid of a projection, reduced without series.

    line = GridLines(mga55).between(5796489.777, 273741.297, 5828259.038, 228854.051)
    line.combined_factor, line.arc_to_chord1

The chord and the geodesic are both computed, and the corrections are what they differ by. With a
geoid, heights are above it; without one they are above the ellipsoid. Coordinates stand in the order
of the projection's axes; bearings count from north to east. Immutable, and safe for any number of threads.)");
  lines.def(py::init(&MakeLines), py::arg("projection"), py::arg("geoid") = nullptr)
      .def_readonly("projection", &LinesObject::projection, "The projection.")
      .def_readonly("geoid", &LinesObject::geoid, "The geoid, or None.")
      .def("between", &Between, py::arg("north1"), py::arg("east1"), py::arg("north2"),
           py::arg("east2"), py::arg("h1") = 0.0, py::arg("h2") = 0.0, py::kw_only(),
           py::arg("degrees") = true,
           R"(between(self, north1, east1, north2, east2, h1=0.0, h2=0.0, *, degrees=True)
--

The lines between two positions as GridLine: distances, bearings, factors and corrections.

Metres, numbers or arrays, broadcast together. A line whose end has no geographic position or no
geoid height is NaN in all fields. Ground distance = grid distance / combined_factor.)")
      .def("plumb", &Plumb, py::arg("north1"), py::arg("east1"), py::arg("north2"),
           py::arg("east2"), py::arg("h1") = 0.0, py::arg("h2") = 0.0,
           R"(plumb(self, north1, east1, north2, east2, h1=0.0, h2=0.0)
--

What the plumb line does to observations at the first end of lines to the second, as PlumbLine.

Arc-seconds, from the slopes of the geoid, without which it raises Error. Arguments as those of between;
a line that between refuses, or an end without slopes, is NaN in all fields.)")
      .def(
          "traverse", &ComputeTraverse, py::arg("start"), py::arg("angles"), py::arg("distances"),
          py::kw_only(), py::arg("heights") = py::none(), py::arg("backsight") = py::none(),
          py::arg("start_azimuth") = py::none(), py::arg("end") = py::none(),
          py::arg("foresight") = py::none(), py::arg("end_azimuth") = py::none(),
          py::arg("end_angle") = py::none(), py::arg("kind") = "ground",
          py::arg("adjustment") = "none", py::arg("sigma_seconds") = 5.0,
          py::arg("sigma_distance") = 0.002, py::arg("sigma_per_metre") = 2e-6,
          py::arg("deflections") = false, py::arg("degrees") = true,
          R"(traverse(self, start, angles, distances, *, heights=None, backsight=None, start_azimuth=None, end=None, foresight=None, end_azimuth=None, end_angle=None, kind="ground", adjustment="none", sigma_seconds=5.0, sigma_distance=0.002, sigma_per_metre=2e-06, deflections=False, degrees=True)
--

Field angles and distances to coordinates: a TraverseResult.

start, end: (north, east) or (north, east, h). angles: at each station, clockwise from the station
before to the next; the first from the mark backsight, a position, or from start_azimuth. distances:
to the next station, of a kind: "slope", "ground" (horizontal, at the mean height), "geodesic" or
"grid". heights: of the next stations, else that of the start. end_angle closes the angles, from the
station before to the mark foresight, or to end_azimuth. Azimuths are geodetic.

adjustment: "none", "bowditch" or "least-squares", for which sigma_seconds, sigma_distance and
sigma_per_metre are the standard deviations of an angle and of a distance. deflections: the angles were
turned about the plumb line; they are reduced by the slopes of the geoid. Raises Error for what cannot
be computed.)")
      .def("__repr__", [](const LinesObject& l) {
        std::string text = "GridLines(" + std::string(py::repr(py::cast(l.projection)));
        if (l.geoid) text += ", geoid=" + std::string(py::repr(py::cast(l.geoid)));
        return text + ")";
      });
  DefineComparison(lines, static_cast<LinesObject*>(nullptr));
  DefinePickle(
      lines, [](const LinesObject& l) { return StateOf(l); },
      +[](const py::tuple& state) {
        return MakeLines(PartOf<ProjectionObject>(state[0]),
                         state[1].is_none() ? nullptr : PartOf<GeoidObject>(state[1]));
      });
}

}  // namespace geomath_python
