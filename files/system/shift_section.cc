#include "files/system/shift_section.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "files/system/system_sections.h"
#include "files/words/name_match.h"
#include "files/words/sibling_path.h"
#include "geomath/base/angle.h"
#include "geomath/frame/frame_change.h"
#include "geomath/frame/plate_motion.h"
#include "geomath/frame/time_specific_similarity.h"
#include "geomath/frame/velocity_grid.h"
#include "geomath/shift/affine_transformation.h"
#include "geomath/shift/coordinate_offset.h"
#include "geomath/shift/small_angle_similarity.h"
#include "geomath/shift/vertical_slope.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_files {
namespace {

using Shift = std::unique_ptr<CoordinateShift>;

double Metres(const JsonSection& section, const char* key) {
  return section.Number(key, "a length in metres");
}

double Angle(const JsonSection& section, const char* key) {
  return section.Number(key, "decimal degrees") * kRadPerDeg;
}

// The parameters that a section has; the others are 0.
template <class Read>
double Optional(const JsonSection& section, const char* key, Read read) {
  return section.Has(key) ? read(section, key) : 0;
}

// The keys tell what the offsets are of.
Shift OffsetOf(const JsonSection& s) {
  const auto any = [&](std::initializer_list<const char*> keys) {
    return std::any_of(keys.begin(), keys.end(), [&](const char* key) { return s.Has(key); });
  };
  const bool angles = any({"latitude", "longitude"}), plane = any({"north", "east"});
  const bool geocentric = any({"x", "y", "z"});
  if (angles + plane + geocentric > 1)
    s.Fail(geocentric ? "x" : "north", "cannot stand beside offsets of other coordinates");
  const auto metres = [&](const char* key) { return Optional(s, key, Metres); };
  if (geocentric) {
    if (s.Has("height")) s.Fail("height", "cannot stand beside geocentric offsets");
    return std::make_unique<CoordinateOffset>(
        CoordinateOffset::Geocentric(metres("x"), metres("y"), metres("z")));
  }
  if (plane)
    return std::make_unique<CoordinateOffset>(ShiftSpace::plane, metres("north"), metres("east"),
                                              metres("height"));
  if (!angles && !s.Has("height")) s.Fail("height", "is missing: an offset belongs there");
  return std::make_unique<CoordinateOffset>(CoordinateOffset::Geographic(
      Optional(s, "latitude", Angle), Optional(s, "longitude", Angle), metres("height")));
}

Shift SlopeOf(const JsonSection& s, const Ellipsoid& global) {
  const auto seconds = [&](const char* key) {
    return s.Number(key, "an inclination in arc-seconds") * kRadPerDeg / 3600;
  };
  return std::make_unique<VerticalSlope>(
      global,
      VerticalSlope::Parameters{Angle(s, "latitude"), Angle(s, "longitude"), Metres(s, "offset"),
                                seconds("slopeLatitude"), seconds("slopeLongitude")});
}

Shift AffineOf(const JsonSection& s) {
  const auto number = [&](const char* key) { return s.Number(key, "a parameter"); };
  return std::make_unique<AffineTransformation>(AffineTransformation::Parameters{
      number("a0"), number("a1"), number("a2"), number("b0"), number("b1"), number("b2")});
}

// Of parameters that run with time.
Shift RunningSimilarityOf(const JsonSection& s, TimeDependentParameters parameters) {
  if (s.Has("validAt")) s.Fail("validAt", "cannot stand beside \"rates\": give one of them");
  const JsonSection rates = s.Section("rates", {"dX", "dY", "dZ", "rX", "rY", "rZ", "ppm"});
  const auto rate = [&](const char* key) {
    return rates.Has(key) ? rates.Number(key, "what the parameter grows by in a year") : 0;
  };
  parameters.shiftRate = {rate("dX"), rate("dY"), rate("dZ")};
  parameters.rotationRate = {rate("rX"), rate("rY"), rate("rZ")};
  parameters.scaleRate = rate("ppm") * 1e-6;
  parameters.epoch = ReadDate(s, "epoch");
  return std::make_unique<TimeDependentSimilarity>(parameters);
}

Shift SimilarityOf(const JsonSection& s) {
  const auto seconds = [&](const char* key) { return s.Number(key, "arc-seconds"); };
  const TAbstractPoint3<double> shift{Metres(s, "dX"), Metres(s, "dY"), Metres(s, "dZ")};
  const TAbstractPoint3<double> turn{seconds("rX"), seconds("rY"), seconds("rZ")};
  const double scale = s.Number("ppm", "the scale in parts per million") * 1e-6;
  const std::string word = ReadWord(s, "rotation", {"coordinate-frame", "position-vector"});
  const RotationSense sense =
      word == "position-vector" ? RotationSense::positionVector : RotationSense::coordinateFrame;
  const bool pivoted = s.Has("pivotX") || s.Has("pivotY") || s.Has("pivotZ");
  for (const char* key : {"rates", "validAt"})
    if (pivoted && s.Has(key)) s.Fail(key, "cannot stand beside a pivot");
  if (s.Has("rates")) return RunningSimilarityOf(s, {shift, turn, scale, {}, {}, 0, 0, sense});
  if (s.Has("epoch")) s.Fail("epoch", "needs \"rates\": it is the date at which they begin");
  if (s.Has("validAt"))
    return std::make_unique<TimeSpecificSimilarity>(shift, turn, scale, sense,
                                                    ReadDate(s, "validAt"));
  if (!pivoted) return std::make_unique<SmallAngleSimilarity>(shift, turn, scale, sense);
  const TAbstractPoint3<double> pivot{Metres(s, "pivotX"), Metres(s, "pivotY"),
                                      Metres(s, "pivotZ")};
  return std::make_unique<MolodenskyBadekas>(shift, turn, pivot, scale, sense);
}

Shift FrameChangeOf(const JsonSection& s) {
  const ReferenceFrame from = ReadFrameName(s, "from"), to = ReadFrameName(s, "to");
  auto change = FrameChange::Make(from, to);
  if (!change)
    s.Fail("to", fmt::format("is \"{}\", to which no published parameters lead from {}",
                             FrameName(to), FrameName(from)));
  return change;
}

// Of a plate of a model.
AngularVelocity VelocityOfPlate(const JsonSection& s) {
  const std::string model = ReadWord(s, "model", {"ITRF2014", "ITRF2020"});
  if (model.empty()) s.Fail("model", "is missing: \"ITRF2014\" or \"ITRF2020\" belongs there");
  const std::string name = s.Text("name", "the four letters of a plate");
  std::vector<std::string> known;
  for (const TectonicPlate& plate :
       Plates(model == "ITRF2014" ? PlateModel::itrf2014 : PlateModel::itrf2020)) {
    if (plate.name == name) return {plate.velocity[0], plate.velocity[1], plate.velocity[2]};
    known.emplace_back(plate.name);
  }
  s.Fail("name",
         fmt::format("is \"{}\"; {}", Printable(name), SuggestName(Printable(name), known)));
}

Shift PlateOf(const JsonSection& s) {
  const auto turn = [&](const char* key) { return s.Number(key, "milliarc-seconds a year"); };
  const auto rate = [&](const char* key) {
    return s.Has(key) ? s.Number(key, "metres a year") : 0;
  };
  const bool own = s.Has("wX") || s.Has("wY") || s.Has("wZ");
  for (const char* key : {"model", "name"})
    if (own && s.Has(key)) s.Fail(key, "cannot stand beside an angular velocity");
  const AngularVelocity velocity =
      own ? AngularVelocity{turn("wX"), turn("wY"), turn("wZ")} : VelocityOfPlate(s);
  return std::make_unique<PlateMotion>(
      velocity, ReadDate(s, "epoch"),
      TAbstractPoint3<double>{rate("originX"), rate("originY"), rate("originZ")});
}

struct Kind {
  const char* key;
  std::vector<std::string_view> keys;
  Shift (*make)(const JsonSection& section, const Ellipsoid& global);
};
const Kind kKinds[] = {
    {"offset",
     {"latitude", "longitude", "height", "north", "east", "x", "y", "z"},
     [](const JsonSection& s, const Ellipsoid&) { return OffsetOf(s); }},
    {"slope", {"latitude", "longitude", "offset", "slopeLatitude", "slopeLongitude"}, &SlopeOf},
    {"affine",
     {"a0", "a1", "a2", "b0", "b1", "b2"},
     [](const JsonSection& s, const Ellipsoid&) { return AffineOf(s); }},
    {"similarity",
     {"dX", "dY", "dZ", "rX", "rY", "rZ", "ppm", "rotation", "pivotX", "pivotY", "pivotZ", "rates",
      "epoch", "validAt"},
     [](const JsonSection& s, const Ellipsoid&) { return SimilarityOf(s); }},
    {"frame",
     {"from", "to"},
     [](const JsonSection& s, const Ellipsoid&) { return FrameChangeOf(s); }},
    {"plate",
     {"model", "name", "wX", "wY", "wZ", "originX", "originY", "originZ", "epoch"},
     [](const JsonSection& s, const Ellipsoid&) { return PlateOf(s); }}};

struct Place {
  const char* word;
  ShiftPlace place;
};
constexpr Place kPlaces[] = {{"before datum", ShiftPlace::beforeDatum},
                             {"after datum", ShiftPlace::afterDatum},
                             {"heights", ShiftPlace::heights},
                             {"after projection", ShiftPlace::afterProjection}};

ShiftPlace PlaceOf(const JsonSection& section) {
  std::vector<std::string_view> words;
  for (const Place& place : kPlaces) words.emplace_back(place.word);
  const std::string word = ReadWord(section, "place", words);
  for (const Place& place : kPlaces)
    if (place.word == word) return place.place;
  section.Fail("place", "is missing: where in the chain the shift stands belongs there");
}

ShiftOutside OutsideOf(const JsonSection& section) {
  const std::string word = ReadWord(section, "outside", {"refuse", "identity", "extrapolate"});
  if (word == "identity") return ShiftOutside::unchanged;
  return word == "extrapolate" ? ShiftOutside::extrapolate : ShiftOutside::refuse;
}

ShiftChoice ChoiceOf(const JsonSection& section, const std::string& file) {
  ShiftChoice choice;
  const std::string name = section.Text("file", "the name of a file");
  choice.file = SiblingPath(file, name);
  if (section.Has("unit")) choice.unit = section.Text("unit", "a unit (\"metre\")");
  const std::string position = ReadWord(section, "position", {"source", "target"});
  if (!position.empty())
    choice.position = position == "source" ? GridPosition::source : GridPosition::target;
  const std::string space = ReadWord(section, "coordinates", {"geographic", "plane"});
  if (!space.empty()) choice.space = space == "plane" ? ShiftSpace::plane : ShiftSpace::geographic;
  if (section.Has("epoch")) choice.epoch = ReadDate(section, "epoch");
  return choice;
}

}  // namespace

SystemShift ReadShift(const std::string& file, const std::string& path, const json& object,
                      const Ellipsoid& global, const ShiftBytes* bytes) {
  std::vector<std::string_view> keys = {"place",    "inverse",     "outside", "file", "unit",
                                        "position", "coordinates", "epoch",   "date"};
  for (const Kind& kind : kKinds) keys.emplace_back(kind.key);
  const JsonSection section(file, path, object, keys);
  SystemShift read;
  read.entry = object.dump();
  read.place = PlaceOf(section);
  read.outside = OutsideOf(section);
  read.direction = ReadWord(section, "inverse", {"yes", "no"}) == "yes" ? ShiftDirection::inverse
                                                                        : ShiftDirection::forward;
  std::string given = section.Has("file") ? "file" : "";
  for (const Kind& kind : kKinds) {
    if (!section.Has(kind.key)) continue;
    if (!given.empty())
      section.Fail(kind.key, fmt::format("cannot stand beside \"{}\": give one of them", given));
    given = kind.key;
    read.shift = kind.make(section.Section(kind.key, kind.keys), global);
  }
  if (read.shift) {
    for (const char* key : {"unit", "position", "coordinates", "outside", "epoch"})
      if (section.Has(key)) section.Fail(key, "is said of a \"file\" only");
  } else {
    read.choice = ChoiceOf(section, file);
    read.shift = bytes ? ParseShift(*bytes, read.choice) : OpenShift(read.choice);
    if (read.choice.epoch && !dynamic_cast<const VelocityGrid*>(read.shift.get()))
      section.Fail("epoch", "is said of a grid of velocities only");
  }
  if (section.Has("date")) {
    read.date = ReadDate(section, "date");
    if (read.shift->Kind() == ShiftKind::timeless)
      section.Fail("date", "is said of a change of frame or a motion only");
  }
  if (!CoordinateChain().AddShift(read.place, {read.shift.get()}))
    section.Fail("place", "is one for another kind of coordinates than this shift has");
  return read;
}

void AddShifts(CoordinateChain& chain, const std::vector<const SystemShift*>& shifts,
               const CoordinateShift* fixedHeight) {
  for (const Place& place : kPlaces) {
    if (place.place == ShiftPlace::afterDatum && fixedHeight)
      chain.AddShift(ShiftPlace::beforeDatum, {fixedHeight});
    for (const SystemShift* shift : shifts)
      if (shift->place == place.place)
        chain.AddShift(place.place,
                       {shift->shift.get(), shift->direction, shift->outside, shift->date});
  }
}

}  // namespace geomath_files
