#include "files/system/shift_section.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "files/system/system_sections.h"
#include "geomath/base/angle.h"
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

Shift SimilarityOf(const JsonSection& s) {
  const auto seconds = [&](const char* key) { return s.Number(key, "arc-seconds"); };
  const TAbstractPoint3<double> shift{Metres(s, "dX"), Metres(s, "dY"), Metres(s, "dZ")};
  const TAbstractPoint3<double> turn{seconds("rX"), seconds("rY"), seconds("rZ")};
  const double scale = s.Number("ppm", "the scale in parts per million") * 1e-6;
  const std::vector<std::string> senses = {"coordinate-frame", "position-vector"};
  const RotationSense sense = ReadWord(s, "rotation", senses) == senses[1]
                                  ? RotationSense::positionVector
                                  : RotationSense::coordinateFrame;
  if (!s.Has("pivotX") && !s.Has("pivotY") && !s.Has("pivotZ"))
    return std::make_unique<SmallAngleSimilarity>(shift, turn, scale, sense);
  const TAbstractPoint3<double> pivot{Metres(s, "pivotX"), Metres(s, "pivotY"),
                                      Metres(s, "pivotZ")};
  return std::make_unique<MolodenskyBadekas>(shift, turn, pivot, scale, sense);
}

struct Kind {
  const char* key;
  std::vector<std::string> keys;
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
     {"dX", "dY", "dZ", "rX", "rY", "rZ", "ppm", "rotation", "pivotX", "pivotY", "pivotZ"},
     [](const JsonSection& s, const Ellipsoid&) { return SimilarityOf(s); }}};

struct Place {
  const char* word;
  ShiftPlace place;
};
constexpr Place kPlaces[] = {{"before datum", ShiftPlace::beforeDatum},
                             {"after datum", ShiftPlace::afterDatum},
                             {"heights", ShiftPlace::heights},
                             {"after projection", ShiftPlace::afterProjection}};

ShiftPlace PlaceOf(const JsonSection& section) {
  std::vector<std::string> words;
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
  choice.file = (std::filesystem::path(file).parent_path() / name).string();
  if (section.Has("unit")) choice.unit = section.Text("unit", "a unit (\"metre\")");
  const std::string position = ReadWord(section, "position", {"source", "target"});
  if (!position.empty())
    choice.position = position == "source" ? GridPosition::source : GridPosition::target;
  const std::string space = ReadWord(section, "coordinates", {"geographic", "plane"});
  if (!space.empty()) choice.space = space == "plane" ? ShiftSpace::plane : ShiftSpace::geographic;
  return choice;
}

}  // namespace

SystemShift ReadShift(const std::string& file, const std::string& path, const json& object,
                      const Ellipsoid& global, const std::string* bytes) {
  std::vector<std::string> keys = {"place", "inverse",  "outside",    "file",
                                   "unit",  "position", "coordinates"};
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
    read.shift = kind.make(
        JsonSection(file, section.PathOf(kind.key), section.Object(kind.key), kind.keys), global);
  }
  if (read.shift) {
    for (const char* key : {"unit", "position", "coordinates", "outside"})
      if (section.Has(key)) section.Fail(key, "is said of a \"file\" only");
  } else {
    read.choice = ChoiceOf(section, file);
    read.shift = bytes ? ParseShift(*bytes, read.choice) : OpenShift(read.choice);
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
        chain.AddShift(place.place, {shift->shift.get(), shift->direction, shift->outside});
  }
}

}  // namespace geomath_files
