#include <fmt/format.h>
#include <pybind11/stl.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>

#include "files/models/shift_file.h"
#include "files/system/json_section.h"
#include "files/system/shift_section.h"
#include "files/system/system_file.h"
#include "files/words/date_text.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "python/bindings/columns.h"
#include "python/bindings/covariance.h"
#include "python/bindings/epsg.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"
#include "python/bindings/pickles.h"

using namespace zel_cs::geomath;
using geomath_files::AngleKind;
using geomath_files::AxisPair;
using geomath_files::AxisPairOf;
using geomath_files::UserError;

namespace geomath_python {
namespace {

std::string ReprOf(const Ellipsoid& e) {
  return fmt::format("Ellipsoid({}, {})", NumberText(e.a), NumberText(e.invF));
}

// Steps on different ellipsoids would give coordinates that look right and are not.
void RequireOneEllipsoid(const ChainObject& chain) {
  if (!chain.projection) return;
  const Ellipsoid& grid = chain.projection->projection->GetEllipsoid();
  const auto require = [&](const Ellipsoid& other, const char* whose) {
    constexpr double kSameMetres = 1e-3;  // publishers round their axes to a millimetre
    if (std::abs(other.a - grid.a) > kSameMetres || std::abs(other.b - grid.b) > kSameMetres)
      throw UserError(
          fmt::format("CoordinateChain: the projection stands on {}, {} on {}: they "
                      "must share one ellipsoid",
                      ReprOf(grid), whose, ReprOf(other)));
  };
  if (chain.datum)
    require(*chain.datum->ellipsoid, "the datum");
  else if (chain.global)
    require(*chain.global, "without a datum the global coordinates");
}

constexpr const char* kFrames[] = {"global", "local"};  // by GeoidFrame

const char* NameOf(GeoidFrame frame) { return kFrames[static_cast<std::size_t>(frame)]; }

GeoidFrame FrameOf(const std::string& name) {
  if (name != kFrames[0] && name != kFrames[1])
    throw UserError(fmt::format("CoordinateChain: \"geoid_frame\" is \"{}\"; known: \"{}\", \"{}\"",
                                geomath_files::Printable(name), kFrames[0], kFrames[1]));
  return name == kFrames[0] ? GeoidFrame::global : GeoidFrame::local;
}

void SetUnits(ChainObject& object, double unit, double heightUnit) {
  for (const double metres : {unit, heightUnit})
    if (!(metres > 0 && std::isfinite(metres)))
      throw UserError("CoordinateChain: a unit is a number of metres above 0");
  object.unit = unit;
  object.heightUnit = heightUnit;
}

// Numbers stay; what is a date of some kind becomes decimal years.
py::object YearsOf(const py::object& dates) {
  if (dates.is_none() || PyFloat_Check(dates.ptr())) return dates;
  return py::module_::import("geomath._dates").attr("decimal_year")(dates);
}

void SetDate(ChainObject& object, const py::object& epoch) {
  if (epoch.is_none()) return;
  const py::object year = YearsOf(epoch);
  object.date = PyNumber_Check(year.ptr()) ? py::float_(year).cast<double>() : kNoDate;
  if (!std::isfinite(object.date))
    throw UserError("CoordinateChain: \"epoch\" must be one date: a decimal year, a date, a text");
}

// A mapping as the section of a system file has it; None for nothing.
geomath_files::SiteErrors SiteErrorsFrom(const py::object& mapping) {
  if (mapping.is_none()) return {};
  const py::module_ json = py::module_::import("json");
  const std::string text = py::str(json.attr("dumps")(py::dict(mapping)));
  const nlohmann::json parsed = geomath_files::ParseJson(text, "site_covariance");
  return geomath_files::ReadSiteErrors(geomath_files::JsonSection(
      "CoordinateChain", "site_covariance", parsed, geomath_files::kSiteErrorsKeys));
}

py::object MappingOf(const geomath_files::SiteErrors& errors) {
  if (errors.parts == LocalToGrid::kNotSetUp) return py::none();
  const std::string text = geomath_files::SiteErrorsSection(errors).dump();
  return py::module_::import("json").attr("loads")(text);
}

std::shared_ptr<ChainObject> Make(const py::object& global, std::shared_ptr<DatumObject> datum,
                                  std::shared_ptr<ProjectionObject> projection,
                                  std::shared_ptr<GeoidObject> geoid, const std::string& frame,
                                  std::shared_ptr<LocalToGrid> localization,
                                  std::shared_ptr<GridToGround> ground, const py::object& shifts,
                                  std::optional<double> fixedHeight, double unit, double heightUnit,
                                  const py::object& epoch, const py::object& siteCovariance) {
  auto object = std::make_shared<ChainObject>();
  if (!global.is_none())
    object->global = EllipsoidFrom(global);
  else if (datum)
    object->global = std::make_shared<Ellipsoid>(MakeEllipsoid(kWgs84A, kWgs84InvF));
  object->datum = std::move(datum);
  object->projection = std::move(projection);
  object->geoid = std::move(geoid);
  object->geoidFrame = FrameOf(frame);
  object->localization = std::move(localization);
  object->siteErrors = SiteErrorsFrom(siteCovariance);
  object->ground = std::move(ground);
  object->fixedHeight = fixedHeight;
  for (const py::handle& shift : shifts) object->shifts.push_back(PartOf<ChainShiftObject>(shift));
  SetUnits(*object, unit, heightUnit);
  SetDate(*object, epoch);
  RequireOneEllipsoid(*object);
  Join(*object);
  return object;
}

// Of an entry of a system file; `bytes` are those of its files.
std::shared_ptr<ChainShiftObject> MakeShift(const std::string& entry,
                                            geomath_files::ShiftBytes bytes,
                                            const Ellipsoid& global) {
  auto object = std::make_shared<ChainShiftObject>();
  const nlohmann::json parsed = geomath_files::ParseJson(entry, "shifts");
  const bool file = parsed.is_object() && parsed.contains("file");
  if (file && !bytes.contains("")) throw UserError("the file of the shift is missing");
  object->shift = geomath_files::ReadShift("shifts", "", parsed, global, file ? &bytes : nullptr);
  object->entry = entry;
  object->bytes = std::move(bytes);
  object->global = global;
  return object;
}

// Axes as a projection gives them back: without text they are north and east.
std::shared_ptr<ChainObject> ChainOf(geomath_files::CoordinateSystem& system) {
  auto object = std::make_shared<ChainObject>();
  const CoordinateChain& read = system.Chain();
  object->global = std::make_shared<Ellipsoid>(*read.GetGlobalEllipsoid());
  if (const Datum* datum = system.SevenParameters()) {
    const auto local = std::make_shared<Ellipsoid>(system.LocalEllipsoid());
    object->datum = std::make_shared<DatumObject>(
        DatumObject{local, Datum(local.get(), datum->Shift(), datum->Rotation(), datum->Scale(),
                                 userTypeUser, false, nullptr)});
  }
  object->fixedHeight = system.FixedHeight();
  object->projection = ProjectionObjectOf(system);
  if (const geomath_files::LoadedGeoid* geoid = system.Geoid()) {
    object->geoid = GeoidObjectOf(*geoid);
    object->geoidFrame = read.GetGeoidFrame();
  }
  if (const LocalToGrid* site = read.GetLocalization())
    object->localization = std::make_shared<LocalToGrid>(*site);
  if (const auto& errors = system.SiteUncertainty()) object->siteErrors = *errors;
  if (const GridToGround* ground = read.GetGround())
    object->ground = std::make_shared<GridToGround>(*ground);
  for (geomath_files::SystemShift& shift : system.ReleaseShifts()) {
    auto part = std::make_shared<ChainShiftObject>();
    part->entry = shift.entry;
    if (!shift.choice.file.empty()) part->bytes = geomath_files::ReadShiftBytes(shift.choice.file);
    part->global = *object->global;
    part->shift = std::move(shift);
    object->shifts.push_back(std::move(part));
  }
  SetUnits(*object, system.Units().plane.metres, system.Units().height.metres);
  object->date = system.Date();
  Join(*object);
  return object;
}

std::shared_ptr<ChainObject> FromFile(const py::object& path) {
  const std::string name = PathOf(path);
  std::unique_ptr<geomath_files::CoordinateSystem> system;
  {
    const py::gil_scoped_release unlocked;
    system = geomath_files::ReadSystemFile(name);
  }
  return ChainOf(*system);
}

std::shared_ptr<ChainObject> FromEpsg(int code, const py::object& near, const py::object& operation,
                                      const py::object& grids, bool datum,
                                      const std::string& fromFrame, const std::string& toFrame) {
  EpsgWish wish;
  wish.datum = datum;
  wish.fromFrame = fromFrame;
  wish.toFrame = toFrame;
  if (fromFrame.empty() && !toFrame.empty())
    throw UserError("CoordinateChain: \"to_frame\" needs a \"from_frame\"");
  for (const py::handle& folder : grids)
    wish.grids.push_back(PathOf(py::reinterpret_borrow<py::object>(folder)));
  if (!near.is_none()) {
    const auto [latitude, longitude] = near.cast<std::pair<double, double>>();
    RequireAngle("near: latitude", latitude, AngleKind::latitude);
    RequireAngle("near: longitude", longitude, AngleKind::longitude);
    wish.near = {latitude, longitude};
  }
  if (!operation.is_none()) wish.operation = std::to_string(operation.cast<int>());
  return ChainOf(*SystemOfEpsg(code, wish));
}

using Batch = std::size_t (CoordinateChain::*)(PointDates, double*, double*, double*, std::size_t,
                                               std::ptrdiff_t, ChainStep*) const;

// Runs a batch of the chain, which works in radians and metres; `before` and `after` turn the units.
// A fourth argument has the dates of the points; else they have that of the chain.
template <Batch batch, std::size_t In>
py::object ConvertAt(const ChainObject& object, const std::array<Argument, In>& arguments,
                     const Factors& before, const Factors& after, const py::object& out,
                     bool returnSteps) {
  static_assert(sizeof(ChainStep) == sizeof(std::uint8_t));
  py::object steps = py::none();
  ChainStep* to = nullptr;
  ChainStep single = ChainStep::none;
  if (returnSteps) {
    std::vector<ArrayReader> readers(arguments.begin(), arguments.end());
    py::array_t<std::uint8_t> array(BroadcastShape(arguments, readers));
    to = reinterpret_cast<ChainStep*>(array.mutable_data());
    if (array.ndim() == 0 && out.is_none())
      to = &single;
    else
      steps = std::move(array);
  }
  py::object converted =
      ConvertColumns<3>(arguments, out, [&](double* const* c, std::size_t first, std::size_t n) {
        ChainStep* const failed = to ? to + first : nullptr;
        before.Apply(c, n);
        const PointDates dates = In == 4 ? PointDates(c[In - 1]) : PointDates(object.date);
        (object.chain.*batch)(dates, c[0], c[1], c[2], n, 1, failed);
        if (batch == &CoordinateChain::ToGlobalDatedBatch) DropBeyondTheMap(c, 3, n, failed);
        after.Apply(c, n);
      });
  if (!returnSteps) return converted;
  if (steps.is_none()) steps = py::int_(static_cast<int>(single));
  return py::tuple(converted) + py::make_tuple(steps);
}

// The arguments, and where an epoch is given, the dates of the points as a fourth.
std::vector<Argument> WithDates(const ChainObject& object, const std::array<Argument, 3>& arguments,
                                const py::object& epoch) {
  std::vector<Argument> all(arguments.begin(), arguments.end());
  if (!epoch.is_none())
    all.push_back({"epoch", YearsOf(epoch)});
  else if (object.chain.NeedsDates() && std::isnan(object.date))
    throw UserError(
        "CoordinateChain: a frame that moves needs the date of the positions: give epoch=2026.9, a "
        "date, or an array with a date for each point");
  return all;
}

template <Batch batch>
py::object Convert(const ChainObject& object, const std::array<Argument, 3>& arguments,
                   const Factors& before, const Factors& after, const py::object& out,
                   bool returnSteps, const py::object& epoch) {
  const std::vector<Argument> all = WithDates(object, arguments, epoch);
  if (all.size() == 4)
    return ConvertAt<batch, 4>(object, {{all[0], all[1], all[2], all[3]}}, before, after, out,
                               returnSteps);
  return ConvertAt<batch, 3>(object, arguments, before, after, out, returnSteps);
}

AxisPair GeographicAxes(const ChainObject& chain) {
  return chain.projection ? AxisPairOf(chain.projection->geographicAxes) : AxisPair{};
}

bool HasCovariance(const py::object& covariance, const py::object& errors, const py::object& out) {
  if (covariance.is_none()) {
    if (!errors.is_none()) throw UserError("errors: they go with a covariance");
    return false;
  }
  if (!out.is_none()) throw UserError("out: a conversion with covariances has new arrays");
  return true;
}

py::object ToLocal(const ChainObject& chain, py::object lat, py::object lon, py::object h,
                   bool degrees, const py::object& out, bool returnSteps, const py::object& epoch,
                   const py::object& covariance, const std::string& frame,
                   const py::object& errors) {
  // Without a projection the local pair is one of angles.
  const double angle = degrees ? kDegPerRad : 1;
  const Factors local{chain.projection ? 1 / chain.unit : angle, 1 / chain.heightUnit};
  const auto [first, second] = PositionArguments(lat, lon, GeographicAxes(chain), degrees);
  const std::array<Argument, 3> arguments = {{first, second, {"h", h}}};
  if (HasCovariance(covariance, errors, out))
    return ConvertWithCovariance(chain, true, WithDates(chain, arguments, epoch), {}, local,
                                 {covariance, frame, errors}, returnSteps);
  return Convert<&CoordinateChain::ToLocalDatedBatch>(chain, arguments, {}, local, out, returnSteps,
                                                      epoch);
}

py::object ToGlobal(const ChainObject& chain, py::object north, py::object east, py::object h,
                    bool degrees, const py::object& out, bool returnSteps, const py::object& epoch,
                    const py::object& covariance, const std::string& frame,
                    const py::object& errors) {
  const Factors local{chain.projection ? chain.unit : 1, chain.heightUnit};
  const Factors global{degrees ? kDegPerRad : 1};
  std::array<Argument, 3> arguments = {{{"north", north}, {"east", east}, {"h", h}}};
  if (!chain.projection) {
    arguments[0] = AngleArgument("north", north, AngleKind::latitude, degrees);
    arguments[1] = AngleArgument("east", east, AngleKind::longitude, degrees);
  }
  if (HasCovariance(covariance, errors, out))
    return ConvertWithCovariance(chain, false, WithDates(chain, arguments, epoch), local, global,
                                 {covariance, frame, errors}, returnSteps);
  return Convert<&CoordinateChain::ToGlobalDatedBatch>(chain, arguments, local, global, out,
                                                       returnSteps, epoch);
}

std::optional<double> DateOf(const ChainObject& c) {
  return std::isnan(c.date) ? std::nullopt : std::optional(c.date);
}

py::dict StateOf(const ChainObject& c) {
  py::dict state;
  state["global_ellipsoid"] = c.global;
  state["datum"] = c.datum;
  state["projection"] = c.projection;
  state["geoid"] = c.geoid;
  state["geoid_frame"] = NameOf(c.geoidFrame);
  state["localization"] = c.localization;
  state["ground"] = c.ground;
  state["shifts"] = py::tuple(py::cast(c.shifts));
  state["fixed_height"] = c.fixedHeight;
  state["unit"] = c.unit;
  state["height_unit"] = c.heightUnit;
  state["epoch"] = DateOf(c);
  state["site_covariance"] = MappingOf(c.siteErrors);
  return state;
}

std::shared_ptr<ChainObject> FromState(const py::dict& state) {
  auto object = std::make_shared<ChainObject>();
  const auto take = [&](const char* key, auto& part) {
    part = state[key].cast<std::remove_reference_t<decltype(part)>>();
  };
  take("global_ellipsoid", object->global);
  take("datum", object->datum);
  take("projection", object->projection);
  take("geoid", object->geoid);
  take("localization", object->localization);
  take("ground", object->ground);
  object->siteErrors = SiteErrorsFrom(state["site_covariance"]);
  for (const py::handle& shift : state["shifts"].cast<py::tuple>())
    object->shifts.push_back(PartOf<ChainShiftObject>(shift));
  if (!state["fixed_height"].is_none()) object->fixedHeight = FiniteOf(state["fixed_height"]);
  object->geoidFrame = FrameOf(state["geoid_frame"].cast<std::string>());
  SetUnits(*object, state["unit"].cast<double>(), state["height_unit"].cast<double>());
  if (!state["epoch"].is_none()) object->date = FiniteOf(state["epoch"]);
  if (object->datum && !object->global) throw UserError("the datum has no global ellipsoid");
  Join(*object);
  return object;
}

// The same chain with some steps exchanged, taken away (None) or added. Another site has another
// uncertainty.
py::object Replace(const py::object& self, const py::kwargs& changes) {
  py::dict steps = StateOf(self.cast<const ChainObject&>());
  if (changes.contains("localization")) steps["site_covariance"] = py::none();
  for (const auto& [name, step] : changes) steps[name] = step;
  return py::type::of(self)(**steps);
}

std::string Repr(const ChainObject& c) {
  std::string text;
  for (const auto& [name, step] : StateOf(c)) {
    const bool plain =
        step.is_none() || step.equal(py::tuple()) ||
        (std::string(py::str(name)) == "geoid_frame" && c.geoidFrame == GeoidFrame::global) ||
        (std::string(py::str(name)).ends_with("unit") && step.cast<double>() == 1);
    if (plain) continue;
    text += fmt::format("{}{}={}", text.empty() ? "" : ", ", std::string(py::str(name)),
                        std::string(py::repr(step)));
  }
  return "CoordinateChain(" + text + ")";
}

}  // namespace

void Join(ChainObject& object) {
  CoordinateChain& chain = object.chain;
  chain = CoordinateChain();
  chain.SetGlobalEllipsoid(object.global.get());
  if (object.fixedHeight) {
    if (!object.datum) throw UserError("CoordinateChain: \"fixed_height\" needs a datum");
    object.fixedHeightDatum.emplace(*object.global, object.datum->datum, *object.fixedHeight);
  } else if (object.datum) {
    chain.SetDatum(&object.datum->datum);
  }
  std::vector<const geomath_files::SystemShift*> shifts;
  for (const auto& part : object.shifts) {
    const ShiftPlace place = part->shift.place;
    if (object.fixedHeight && part->shift.shift->Space() == ShiftSpace::geocentric &&
        place == ShiftPlace::afterDatum)
      throw UserError(
          "CoordinateChain: behind a datum with a \"fixed_height\" there are no geocentric "
          "coordinates, which a shift moves");
    shifts.push_back(&part->shift);
  }
  AddShifts(chain, shifts, object.fixedHeightDatum ? &*object.fixedHeightDatum : nullptr);
  if (object.projection) chain.SetProjection(object.projection->projection.get());
  if (object.geoid) chain.SetGeoid(&object.geoid->Heights(), object.geoidFrame);
  chain.SetLocalization(object.localization.get());
  chain.SetGround(object.ground.get());
}

// What is read from the state of a pickle: the entry, the bytes of its files, the ellipsoid.
std::shared_ptr<ChainShiftObject> ShiftFromState(const py::tuple& s) {
  geomath_files::ShiftBytes bytes;
  for (const auto& [name, content] : s[1].cast<py::dict>())
    bytes.emplace(name.cast<std::string>(), content.cast<std::string>());
  return MakeShift(s[0].cast<std::string>(), std::move(bytes), *PartOf<Ellipsoid>(s[2]));
}

py::dict BytesOf(const ChainShiftObject& shift) {
  py::dict bytes;
  for (const auto& [name, content] : shift.bytes) bytes[TextOf(name)] = py::bytes(content);
  return bytes;
}

void BindChainShift(py::module_& module) {
  py::class_<ChainShiftObject, std::shared_ptr<ChainShiftObject>> shift(module, "ChainShift", R"(
A shift of a chain, as an entry of "shifts" in a system file describes it (docs/system-file.md).

Chains from files and from the registry have them; a CoordinateChain takes them as shifts. Immutable;
pickles carry the whole files.)");
  shift.attr("__module__") = "geomath";
  shift
      .def_property_readonly(
          "entry", [](const ChainShiftObject& s) { return TextOf(s.entry); },
          "The entry of the system file, JSON.")
      .def(
          "__eq__",
          [](const ChainShiftObject& a, const ChainShiftObject& b) {
            return a.entry == b.entry && a.bytes == b.bytes;
          },
          py::is_operator())
      .def("__hash__", [](const ChainShiftObject& s) { return py::hash(py::bytes(s.entry)); })
      .def("__repr__",
           [](const ChainShiftObject& s) { return TextOf("<ChainShift " + s.entry + ">"); });
  DefinePickle(
      shift,
      [](const ChainShiftObject& s) {
        return py::make_tuple(TextOf(s.entry), BytesOf(s), std::make_shared<Ellipsoid>(s.global));
      },
      &ShiftFromState);
}

void BindChain(py::module_& module) {
  BindChainShift(module);
  py::class_<ChainObject, std::shared_ptr<ChainObject>> chain(module, "CoordinateChain", R"(
A whole conversion as one object: global positions to local grid coordinates and back.

    chain = CoordinateChain.from_file("site.json")
    north, east, h = chain.to_local(52.658, 1.716, 108.05)
    lat, lon, h = chain.to_global(north, east, h)

    global lat, lon, h - global ellipsoid - datum - local ellipsoid - projection
                       - localization - ground - local north, east, h

Steps that are not given are left out: without a datum the positions stand on the ellipsoid of the
projection already; without a projection the local pair is latitude and longitude on the ellipsoid of
the datum. global_ellipsoid (an Ellipsoid or a name) is WGS84 when there is a datum. A geoid turns
heights above the ellipsoid into heights above the geoid on the way out and back on the way in;
geoid_frame says whether its heights stand on the "global" or the "local" ellipsoid. unit and
height_unit are metres of one unit of the local pair and of local heights, which come and go in them.
epoch is the date of positions that come without one, for chains with a frame that moves.

A point that a step refuses becomes NaN in all three results and disturbs no other point;
return_steps=True tells which step it was. Chains are immutable, equal when their steps are, and
pickle whole, with everything that was read from files. Any number of threads may use one.

Raises Error when datum and projection stand on different ellipsoids.)");
  chain.attr("__module__") = "geomath";
  chain
      .def(py::init(&Make), py::kw_only(), py::arg("global_ellipsoid") = py::none(),
           py::arg("datum") = py::none(), py::arg("projection") = py::none(),
           py::arg("geoid") = py::none(), py::arg("geoid_frame") = "global",
           py::arg("localization") = py::none(), py::arg("ground") = py::none(),
           py::arg("shifts") = py::tuple(), py::arg("fixed_height") = py::none(),
           py::arg("unit") = 1.0, py::arg("height_unit") = 1.0, py::arg("epoch") = py::none(),
           py::arg("site_covariance") = py::none())
      .def_static("from_file", &FromFile, py::arg("path"), R"(from_file(path)
--

The chain that a system file describes (docs/system-file.md), as `geomath convert --system` uses it.

Raises Error, naming the file, the key and what would be right, for everything that is wrong.)")
      .def_static(
          "from_epsg", &FromEpsg, py::arg("code"), py::kw_only(), py::arg("near") = py::none(),
          py::arg("operation") = py::none(), py::arg("grids") = py::tuple(),
          py::arg("datum") = true, py::arg("from_frame") = "", py::arg("to_frame") = "",
          R"(from_epsg(code, *, near=None, operation=None, grids=(), datum=True, from_frame="", to_frame="")
--

The chain of a projected system of the EPSG registry, as `geomath system --epsg` writes it, from PROJ's
database on this machine: WGS 84 (or what the registry takes for it) to the system by the
transformation that is best over its area, or at near, a pair of latitude and longitude in degrees, or
by the one whose code is operation. Grids are looked for in the folders grids, in those of GEOMATH_GRIDS
and in PROJ's. With datum=False positions are those of the system's own datum. With a from_frame, such
as "ITRF2020", positions come in that frame at their epoch, to to_frame where the realization of the
datum is not to be the usual one.

Raises Error for a code that the registry does not have or a system file cannot hold.)")
      .def_readonly("global_ellipsoid", &ChainObject::global,
                    "The ellipsoid of the global positions, or None.")
      .def_readonly("datum", &ChainObject::datum, "The datum, or None.")
      .def_readonly("projection", &ChainObject::projection, "The projection, or None.")
      .def_readonly("geoid", &ChainObject::geoid, "The geoid, or None.")
      .def_property_readonly(
          "geoid_frame", [](const ChainObject& c) { return NameOf(c.geoidFrame); },
          "To which ellipsoid the heights of the geoid belong: \"global\" or \"local\".")
      .def_readonly("localization", &ChainObject::localization, "The site calibration, or None.")
      .def_readonly("ground", &ChainObject::ground, "The ground system, or None.")
      .def_property_readonly(
          "shifts", [](const ChainObject& c) { return py::tuple(py::cast(c.shifts)); },
          "The shifts, ChainShift, in the order of the system file.")
      .def_readonly("fixed_height", &ChainObject::fixedHeight,
                    "The height at which positions go through the datum, metres, or None.")
      .def_property_readonly(
          "site_covariance", [](const ChainObject& c) { return MappingOf(c.siteErrors); },
          "The uncertainty of the site calibration as a system file has it (pivotN, pivotE, plane, "
          "height), which covariances get; None where it counts as exact.")
      .def_readonly("unit", &ChainObject::unit, "Metres of one unit of local north and east.")
      .def_readonly("height_unit", &ChainObject::heightUnit, "Metres of one unit of local heights.")
      .def_property_readonly(
          "epoch", &DateOf, "The date of positions that come without one, a decimal year, or None.")
      .def_property_readonly(
          "needs_epoch", [](const ChainObject& c) { return c.chain.NeedsDates(); },
          "Whether a frame moves, so that positions need a date.")
      .def("replace", &Replace, R"(replace(self, **steps)
--

A chain with some steps exchanged, added, or taken away (None); the keywords are those of the class.)")
      .def(
          "to_local", &ToLocal, py::arg("lat"), py::arg("lon"), py::arg("h") = 0.0, py::kw_only(),
          py::arg("degrees") = true, py::arg("out") = py::none(), py::arg("return_steps") = false,
          py::arg("epoch") = py::none(), py::arg("covariance") = py::none(),
          py::arg("frame") = "north-east-up", py::arg("errors") = py::none(),
          R"(to_local(self, lat, lon, h=0.0, *, degrees=True, out=None, return_steps=False, epoch=None, covariance=None, frame="north-east-up", errors=None)
--

Global positions to local coordinates: (north, east, h), in the units of the chain.

lat, lon: degrees, or radians with degrees=False; h: metres above the global ellipsoid. Numbers or
arrays, broadcast together; numbers alone give numbers. out: three float64 arrays for the results,
which may be the arrays of the arguments. A point that fails is NaN in all three. With
return_steps=True a last result holds the step that failed, as a ChainStep, 0 where none did.

covariance: that of the positions, of shape (3, 3) or, with points of shape S, S + (3, 3); the fourth
result is that of the local coordinates, S + (3, 3), north, east and height in metres squared. frame is
what it is of: "north-east-up" (metres), "geocentric" (metres) or "geographic" (radians and metres), in
that order whatever the axes are. errors: what the steps do not know, a dict of "datum" (standard
deviation in every direction, metres), "geoid" (of its heights, metres), "nodes" (metres in one unit of
the accuracies that the nodes of shift grids have) and "site" (a SiteAdjustment instead of
site_covariance, which takes part by itself, or None for an exact site).
A matrix that is no covariance fails as an input. out has no covariances.

epoch: the date of the positions, for a chain with a frame that moves: a decimal year, a date or
datetime, a numpy.datetime64, a text such as "2026-11-23", or an array with one for each point,
broadcast with the others; instead of the epoch of the chain. Raises Error where neither is given.)")
      .def(
          "to_global", &ToGlobal, py::arg("north"), py::arg("east"), py::arg("h") = 0.0,
          py::kw_only(), py::arg("degrees") = true, py::arg("out") = py::none(),
          py::arg("return_steps") = false, py::arg("epoch") = py::none(),
          py::arg("covariance") = py::none(), py::arg("frame") = "north-east-up",
          py::arg("errors") = py::none(),
          R"(to_global(self, north, east, h=0.0, *, degrees=True, out=None, return_steps=False, epoch=None, covariance=None, frame="north-east-up", errors=None)
--

Local coordinates to global positions: (lat, lon, h), the inverse of to_local.

north, east, h: in the units of the chain, numbers or arrays, broadcast together. lat and lon are degrees, or radians
with degrees=False. out, return_steps, covariance, errors and epoch, the date of the results, as for
to_local; frame is that of the resulting covariance.)")
      .def(
          "__eq__",
          [](const ChainObject& a, const ChainObject& b) { return StateOf(a).equal(StateOf(b)); },
          py::is_operator())
      .def("__hash__",
           [](const ChainObject& c) { return py::hash(py::tuple(StateOf(c).attr("values")())); })
      .def("__repr__", &Repr);
  DefinePickle(chain, &StateOf, &FromState);

  module.def("_decimal_year", [](const std::string& text) {
    const geomath_files::ParsedNumber date = geomath_files::ParseDate(text);
    if (!date) throw UserError("date: " + date.problem);
    return date.value;
  });
  module.def("_chain_steps", [] {
    py::dict names;
    for (int step = 0; step <= static_cast<int>(ChainStep::pointMotion); ++step)
      names[py::int_(step)] = ChainStepName(static_cast<ChainStep>(step));
    return names;
  });
}

}  // namespace geomath_python
