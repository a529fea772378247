#include <pybind11/stl.h>

#include <optional>
#include <string>
#include <vector>

#include "files/design/design_problem.h"
#include "files/system/projection_names.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/design/linear_distortion.h"
#include "geomath/design/zone_split.h"
#include "python/bindings/columns.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_python {
namespace {

constexpr double kPpm = 1e6;
constexpr const char* kFamilies[] = {"tm", "lambert", "oblique", "stereographic"};
constexpr const char* kKinds[] = {"TMERC", "LC", "OM83", "DSTER"};
constexpr const char* kMeasures[] = {"square", "largest", "percentile", "range"};

// Which of the names it is.
template <std::size_t N>
std::size_t IndexOf(const char* what, const std::string& name, const char* const (&names)[N]) {
  for (std::size_t i = 0; i < N; ++i)
    if (name == names[i]) return i;
  const std::vector<std::string> known(names, names + N);
  throw UserError(std::string(what) + ": unknown name \"" + Printable(name) + "\"; " +
                  SuggestName(name, known));
}

// The ground as columns, in the units of the library, with the shape that it came in.
struct GroundColumns {
  GroundColumns(const py::object& lat, const py::object& lon, const py::object& h,
                const py::object& weights, bool degrees) {
    const std::array<Argument, 4> arguments = {
        AngleArgument("lat", lat, AngleKind::latitude, degrees),
        AngleArgument("lon", lon, AngleKind::longitude, degrees),
        {"h", h},
        {"weights", weights.is_none() ? py::object(py::float_(1.0)) : weights}};
    std::vector<ArrayReader> readers(arguments.begin(), arguments.end());
    shape = BroadcastShape(arguments, readers);
    std::size_t count = 1;
    for (const py::ssize_t size : shape) count *= static_cast<std::size_t>(size);
    for (std::size_t c = 0; c < readers.size(); ++c) {
      columns[c].resize(count);
      readers[c].Start(shape);
      readers[c].Read(columns[c].data(), count);
    }
    // Positions that cannot be read are holes, as they are of every conversion.
    for (std::size_t i = 0; i < count; ++i)
      if (std::isnan(columns[0][i]) || std::isnan(columns[1][i])) {
        columns[0][i] = columns[1][i] = 0;
        columns[3][i] = 0;
      }
  }

  HeightPoints Points() const { return {columns[0], columns[1], columns[2], columns[3]}; }

  Shape shape;
  std::vector<double> columns[4];
};

py::object Made(const char* name, const py::tuple& values) {
  return py::module_::import("geomath").attr(name)(*values);
}

py::object ZoneOf(const ZoneDefinition& zone, const Ellipsoid& ellipsoid) {
  const auto at = static_cast<std::size_t>(zone.family);
  const auto projection = zone.Projection(ellipsoid);
  std::vector<double> values;
  for (int i = 0; i < projection->GetQParam(); ++i)
    values.push_back(projection->GetParam(i, kUnitDegrees));
  const double azimuth = zone.azimuth * kDegPerRad;
  return Made("Zone", py::make_tuple(kFamilies[at], zone.lat0 * kDegPerRad, zone.lon0 * kDegPerRad,
                                     azimuth, zone.scale, zone.fNorth, zone.fEast,
                                     std::make_shared<ProjectionObject>(
                                         *FindProjection(kKinds[at]), values, ellipsoid.a,
                                         ellipsoid.invF, kNorthEast, kNorthEast)));
}

DesignOptions OptionsOf(const Ellipsoid& ellipsoid,
                        const std::optional<std::vector<std::string>>& families,
                        const std::string& criterion, double percentile,
                        const std::vector<std::shared_ptr<ProjectionObject>>& beside) {
  DesignOptions options;
  options.ellipsoid = ellipsoid;
  options.criterion = {static_cast<DesignMeasure>(IndexOf("criterion", criterion, kMeasures)),
                       percentile / 100};
  if (families) {
    options.families.clear();
    for (const std::string& name : *families)
      options.families.push_back(static_cast<ZoneFamily>(IndexOf("families", name, kFamilies)));
  }
  for (const auto& each : beside) options.neighbours.push_back(each->projection.get());
  // Hears of Ctrl-C.
  options.progress = [](double) {
    const py::gil_scoped_acquire locked;
    return PyErr_CheckSignals() == 0;
  };
  return options;
}

void RequireDone(DesignStatus status) {
  if (PyErr_Occurred()) throw py::error_already_set();
  if (status != DesignStatus::done) throw UserError("design: " + DesignProblem(status));
}

py::object Design(const py::object& lat, const py::object& lon, const py::object& h,
                  const py::object& weights, const py::object& ellipsoid,
                  const std::optional<std::vector<std::string>>& families,
                  const std::string& criterion, double percentile, const py::object& limit,
                  const std::vector<std::shared_ptr<ProjectionObject>>& beside, bool degrees) {
  const GroundColumns ground(lat, lon, h, weights, degrees);
  const auto on = EllipsoidFrom(ellipsoid);
  const DesignOptions options = OptionsOf(*on, families, criterion, percentile, beside);
  const bool limited = !limit.is_none();
  const double most = limited ? limit.cast<double>() / kPpm : 0;
  if (limited && !(most > 0)) throw UserError("limit: must be parts per million above 0");
  ZoneDesign design;
  std::optional<ZoneSplit> split;
  {
    const py::gil_scoped_release unlocked;
    design = DesignZone(ground.Points(), options);
  }
  RequireDone(design.status);
  const ZoneDefinition& best = design.families.front().rounded;
  py::array_t<double> delta(ground.shape);
  LinearDistortion(*best.Projection(*on), ground.columns[0].data(), ground.columns[1].data(),
                   ground.columns[2].data(), delta.mutable_data(), ground.columns[0].size());
  const DistortionFigures figures({delta.data(), ground.columns[0].size()}, ground.columns[3]);
  const bool ranked = options.criterion.measure == DesignMeasure::percentile;
  if (limited && figures.Percentile(ranked ? options.criterion.percentile : 1) > most) {
    {
      const py::gil_scoped_release unlocked;
      split = SplitZones(ground.Points(), options, most);
    }
    RequireDone(split->status);
  }
  Multiply(delta.mutable_data(), ground.columns[0].size(), kPpm);
  py::list all, several;
  for (const FamilyDesign& family : design.families)
    all.append(
        Made("FamilyDesign", py::make_tuple(ZoneOf(family.rounded, *on), ZoneOf(family.exact, *on),
                                            family.roundedValue * kPpm, family.value * kPpm,
                                            family.centredValue * kPpm)));
  py::array_t<int> which(ground.shape);
  std::fill_n(which.mutable_data(), which.size(), -1);
  if (split)
    for (std::size_t i = 0; i < split->zones.size(); ++i) {
      several.append(ZoneOf(split->zones[i].zone, *on));
      for (const std::size_t point : split->zones[i].points)
        which.mutable_data()[point] = static_cast<int>(i);
    }
  py::array_t<double> weight(ground.shape);
  std::copy(ground.columns[3].begin(), ground.columns[3].end(), weight.mutable_data());
  return Made(
      "ZoneDesign",
      py::make_tuple(py::tuple(all), delta, weight,
                     limited ? py::object(py::float_(most * kPpm)) : py::object(py::none()),
                     split ? py::object(py::tuple(several)) : py::object(py::none()), which));
}

py::object Distortions(const ProjectionObject& p, py::object lat, py::object lon, py::object h,
                       bool degrees, const py::object& out) {
  const std::array<Argument, 3> arguments = {
      AngleArgument("lat", lat, AngleKind::latitude, degrees),
      AngleArgument("lon", lon, AngleKind::longitude, degrees),
      {"h", h}};
  return ConvertColumns<1>(arguments, out, [&](double* const* c, std::size_t, std::size_t n) {
    LinearDistortion(*p.projection, c[0], c[1], c[2], c[0], n);
    Multiply(c[0], n, kPpm);
  });
}

constexpr const char* kDesignDoc =
    "design(lat, lon, h, *, weights=None, ellipsoid='WGS84', families=None, criterion='square',\n"
    "       percentile=95, limit=None, beside=(), degrees=True)\n\n"
    "A projection made for a terrain: grid distances that are ground distances as nearly as can "
    "be.\n\n"
    "lat, lon, h: positions and ellipsoidal heights, of any shape; NaN is a hole. weights: of the\n"
    "points, such as inhabitants. families: of 'tm', 'lambert', 'oblique', 'stereographic', all\n"
    "unless given. criterion: what is made small, 'square' (weighted mean square), 'largest',\n"
    "'percentile' (the one named) or 'range'. limit: ppm that the largest distortion, or the\n"
    "percentile, is to stay within; where no single zone does, the fewest strips that would are\n"
    "sought. beside: projections whose coordinates the false origin keeps apart from.\n"
    "Returns a ZoneDesign. Raises Error where there is none, and says why.";

}  // namespace

void BindDesign(py::module_& module) {
  using namespace py::literals;
  module.def("design", &Design, "lat"_a, "lon"_a, "h"_a, py::kw_only(), "weights"_a = py::none(),
             "ellipsoid"_a = "WGS84", "families"_a = py::none(), "criterion"_a = "square",
             "percentile"_a = 95.0, "limit"_a = py::none(),
             "beside"_a = std::vector<std::shared_ptr<ProjectionObject>>(), "degrees"_a = true,
             kDesignDoc);
  module.def(
      "linear_distortion", &Distortions, "projection"_a, "lat"_a, "lon"_a, "h"_a, py::kw_only(),
      "degrees"_a = true, "out"_a = py::none(),
      "linear_distortion(projection, lat, lon, h, *, degrees=True, out=None)\n\n"
      "By how much grid distances are longer than ground distances, ppm: k R/(R + h) - 1 with\n"
      "the Gaussian mean radius R of the place.");
}

}  // namespace geomath_python
