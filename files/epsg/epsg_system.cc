#include "files/epsg/epsg_system.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>

#include "files/epsg/epsg_datum.h"
#include "files/epsg/epsg_projection.h"
#include "files/epsg/epsg_registry.h"
#include "files/epsg/projjson.h"
#include "files/system/ellipsoid_names.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"

using namespace zel_cs::geomath;
using nlohmann::json;
using nlohmann::ordered_json;

namespace geomath_files {
namespace {

constexpr int kWgs84Code = 4326;

// Metres between the registry's method and a system file's that are worth a word.
constexpr double kNoticed = 0.01;

const std::string kWaysOut =
    "; --list-operations lists them, --no-datum writes the system for positions on its own datum";

ordered_json EllipsoidSection(const Ellipsoid& ellipsoid) {
  for (const NamedEllipsoid& row : NamedEllipsoids()) {
    if (row.a == ellipsoid.a && row.invF == ellipsoid.invF) return {{"ellipsoid", row.name}};
  }
  if (ellipsoid.a == ellipsoid.b) return {{"a", ellipsoid.a}, {"b", ellipsoid.b}};
  return {{"a", ellipsoid.a}, {"invF", ellipsoid.invF}};
}

// Coordinates on GRS80 and WGS 84 differ by 0.1 mm at most, which is that of their semi-minor axes.
bool IsLikeWgs84(const Ellipsoid& ellipsoid) {
  constexpr double kAlike = 1e-3;  // metres
  const Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);
  return std::abs(ellipsoid.a - wgs84.a) < kAlike && std::abs(ellipsoid.b - wgs84.b) < kAlike;
}

// ---- the system ----

// A system of the registry and its geographic one, which is itself where it is not projected.
struct Chosen {
  RegisteredCrs crs;
  json geographic;

  std::string Title() const { return fmt::format("EPSG:{} {}", crs.code, crs.name); }
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw UserError(fmt::format("{}: {}", Title(), reason));
  }
  bool IsProjected() const { return crs.document.contains("conversion"); }
};

Chosen Choose(const EpsgRegistry& registry, const std::string& code) {
  Chosen chosen{registry.Crs(code), {}};
  const json& document = chosen.crs.document;
  const std::string type = document.value("type", "?");
  if (type == "ProjectedCRS") {
    chosen.geographic = document.at("base_crs");
  } else if (type == "GeographicCRS") {
    chosen.geographic = document;
  } else if (type == "CompoundCRS") {
    chosen.Refuse("is a pair of systems; give the horizontal one, EPSG:" + chosen.crs.horizontal);
  } else if (type == "VerticalCRS") {
    chosen.Refuse("is a system of heights; give a projected one");
  } else if (type == "GeodeticCRS") {
    chosen.Refuse("has geocentric coordinates; give a projected system");
  } else {
    chosen.Refuse(
        fmt::format("is a {}, which no system file can hold; give a projected system", type));
  }
  return chosen;
}

// ---- transformations ----

struct Candidate {
  RegisteredOperation operation;
  HeldOperation held;
  double covered;  // of the area where it is to be good, 0 to 1

  std::string Title() const {
    return operation.code.empty() ? operation.name
                                  : fmt::format("EPSG:{} {}", operation.code, operation.name);
  }
  std::string Accuracy() const {
    return operation.accuracy < 0 ? "accuracy unknown"
                                  : fmt::format("accuracy {} m", operation.accuracy);
  }
};

// Boxes of transformations are drawn more or less generously: one that leaves out less than this
// counts as whole.
constexpr double kAsGoodAsWhole = 0.9;

// Whether the first serves better: more of the area, then better accuracy.
bool ServesBetter(const Candidate& a, const Candidate& b) {
  const double areaA = std::min(a.covered, kAsGoodAsWhole);
  const double areaB = std::min(b.covered, kAsGoodAsWhole);
  if (areaA != areaB) return areaA > areaB;
  const auto accuracy = [](const Candidate& c) {
    return c.operation.accuracy < 0 ? HUGE_VAL : c.operation.accuracy;
  };
  return accuracy(a) < accuracy(b);
}

std::vector<Candidate> FindCandidates(const EpsgRegistry& registry, const Chosen& chosen,
                                      const DatumWish& wish) {
  GeoBox area = chosen.crs.area;
  if (wish.near)
    area = {wish.near->longitude, wish.near->latitude, wish.near->longitude, wish.near->latitude};
  const std::string code = std::to_string(CodeIn(chosen.geographic));
  std::vector<Candidate> candidates;
  for (RegisteredOperation& operation : registry.OperationsToWgs84(code, area)) {
    const double covered = wish.near
                               ? operation.area.Contains(wish.near->latitude, wish.near->longitude)
                               : area.CoveredBy(operation.area);
    HeldOperation held = HoldOperation(operation.document);
    candidates.push_back({std::move(operation), std::move(held), covered});
  }
  std::stable_sort(candidates.begin(), candidates.end(), ServesBetter);
  return candidates;
}

std::string ListText(const std::vector<Candidate>& candidates) {
  std::string text;
  for (const Candidate& each : candidates)
    text +=
        fmt::format("{}\n    {}; {:.0f} % of the area: {}\n    {}{}\n", each.Title(),
                    each.Accuracy(), each.covered * 100, each.operation.areaName, each.held.method,
                    each.held.parameters ? "" : ": no system file can hold it");
  return text;
}

const Candidate& ChooseCandidate(const Chosen& chosen, const std::vector<Candidate>& candidates,
                                 const DatumWish& wish) {
  const auto taken = std::find_if(candidates.begin(), candidates.end(), [&](const auto& each) {
    return wish.operation.empty() ? each.held.parameters.has_value()
                                  : each.operation.code == wish.operation;
  });
  if (taken == candidates.end()) {
    std::string problem = "the registry has no transformation to WGS 84";
    if (!wish.operation.empty())
      problem = fmt::format("EPSG:{} is none of its transformations to WGS 84", wish.operation);
    else if (!candidates.empty())
      problem = fmt::format("none of its {} transformations to WGS 84 has seven parameters or less",
                            candidates.size());
    chosen.Refuse(problem + kWaysOut);
  }
  if (!taken->held.parameters)
    chosen.Refuse(fmt::format("{} is by {}, which no system file can hold{}", taken->Title(),
                              taken->held.method, kWaysOut));
  return *taken;
}

// ---- the file ----

// Puts a system file together.
class SystemMaker {
 public:
  SystemMaker(const std::string& code, const DatumWish& wish)
      : chosen_(Choose(registry_, code)), wish_(wish) {}

  EpsgSystem Make() {
    NoteDeprecation();
    // The first entries of the file; the description is told at the end.
    system_.document = {{"name", chosen_.crs.name}, {"description", ""}};
    const GeoBox& area = chosen_.crs.area;
    system_.document["area"] = {
        {"west", area.west}, {"south", area.south}, {"east", area.east}, {"north", area.north}};
    description_ = fmt::format("EPSG:{} of {}", chosen_.crs.code, registry_.Version());
    if (chosen_.IsProjected()) {
      AddProjected(ProjectionOf(chosen_.crs.document, chosen_.Title()));
    } else {
      AddDatum(EllipsoidOf(chosen_.geographic));
      Note("a system without projection, as \"geomath calibrate\" takes it");
    }
    system_.document["crs"] = crs_;
    system_.document["description"] = description_;
    return std::move(system_);
  }

 private:
  void Note(const std::string& note) { system_.notes.push_back(note); }
  void Describe(const std::string& part) { description_ += "; " + part; }

  void NoteDeprecation() {
    if (!chosen_.crs.deprecated) return;
    std::string successors;
    for (const std::string& each : chosen_.crs.successors) successors += " EPSG:" + each;
    Note(chosen_.Title() + " is deprecated" +
         (successors.empty() ? "" : "; in its place:" + successors));
  }

  void AddProjected(const EpsgProjection& projection) {
    Describe(fmt::format("{} by {}", projection.method, projection.section.value("name", "")));
    AddDatum(projection.ellipsoid, projection.ownEllipsoid);
    system_.document["projection"] = projection.section;
    if (!projection.axes.empty()) system_.document["axes"] = {{"grid", projection.axes}};
    // A layer's x and y are east and north: others would be taken for what they are not.
    if (projection.axes.empty()) crs_["grid"] = "EPSG:" + chosen_.crs.code;
    if (projection.unit.metres == 1) return;
    Describe(fmt::format("metres, not {}", projection.unit.name));
    Note(fmt::format("coordinates are metres; the registry has them in units of {} m ({})",
                     projection.unit.metres, projection.unit.name));
  }

  std::string Geographic() const {
    return fmt::format("EPSG:{} {}", CodeIn(chosen_.geographic),
                       chosen_.geographic.value("name", "?"));
  }

  // Without "datum": positions are on the datum of the system.
  void AddOwnDatum(const Ellipsoid& ellipsoid, const std::string& why) {
    system_.document["local"] = EllipsoidSection(ellipsoid);
    crs_["geographic"] = fmt::format("EPSG:{}", CodeIn(chosen_.geographic));
    Describe(fmt::format("positions on {}{}", Geographic(), why));
  }

  void AddDatum(const Ellipsoid& ellipsoid, bool ownEllipsoid = false) {
    if (wish_.none || CodeIn(chosen_.geographic) == kWgs84Code) return AddOwnDatum(ellipsoid, "");
    const std::vector<Candidate> candidates = FindCandidates(registry_, chosen_, wish_);
    const Candidate& taken = ChooseCandidate(chosen_, candidates, wish_);
    const SevenParameters& seven = *taken.held.parameters;
    const std::string title = fmt::format("{}, {}", taken.Title(), taken.Accuracy());
    NoteChoice(candidates, taken);
    if (seven.IsNull() && IsLikeWgs84(EllipsoidOf(chosen_.geographic)))
      return AddOwnDatum(ellipsoid, fmt::format(" taken for WGS 84 ({}: no shift)", title));
    if (ownEllipsoid)
      chosen_.Refuse(
          "its projection stands on an ellipsoid of its own, beside which no datum fits" +
          kWaysOut);
    system_.document["global"] = EllipsoidSection(MakeEllipsoid(kWgs84A, kWgs84InvF));
    system_.document["local"] = EllipsoidSection(ellipsoid);
    system_.document["datum"] = seven.Section();
    crs_["geographic"] = fmt::format("EPSG:{}", kWgs84Code);
    Describe(fmt::format("positions on WGS 84 by {}", title));
    if (seven.SmallAngleError() >= kNoticed)
      Note(
          fmt::format("its large rotations are taken exactly, up to {:.2f} m from the registry's "
                      "small-angle method",
                      seven.SmallAngleError()));
  }

  void NoteChoice(const std::vector<Candidate>& candidates, const Candidate& taken) {
    if (taken.covered < kAsGoodAsWhole)
      Note(
          fmt::format("{} covers only {:.0f} % of the system's area ({}); --near LAT,LON finds "
                      "one for a place",
                      taken.Title(), taken.covered * 100, taken.operation.areaName));
    for (const Candidate& each : candidates) {
      const bool better = each.operation.accuracy >= 0 && each.covered >= taken.covered &&
                          each.operation.accuracy < taken.operation.accuracy;
      if (better && !each.held.parameters)
        Note(fmt::format("{}, {}, is better and cannot be held: {}", each.Title(), each.Accuracy(),
                         each.held.method));
    }
    if (candidates.size() > 1)
      Note(fmt::format("other transformations to WGS 84: {}; --list-operations shows them",
                       candidates.size() - 1));
  }

  const EpsgRegistry registry_;
  const Chosen chosen_;
  const DatumWish& wish_;
  EpsgSystem system_;
  std::string description_;
  ordered_json crs_;  // of the positions and of the grid, by which a GIS knows them
};

}  // namespace

EpsgSystem MakeEpsgSystem(const std::string& code, const DatumWish& wish) {
  return SystemMaker(code, wish).Make();
}

std::string ListEpsgOperations(const std::string& code, const DatumWish& wish) {
  const EpsgRegistry registry;
  return ListText(FindCandidates(registry, Choose(registry, code), wish));
}

std::string FindEpsgSystems(const std::string& words, const std::optional<Position>& place) {
  std::istringstream stream(LowerCase(words));
  const std::vector<std::string> wanted{std::istream_iterator<std::string>(stream), {}};
  std::vector<ListedCrs> found;
  for (ListedCrs& each : EpsgRegistry().ProjectedSystems()) {
    const std::string text = LowerCase(each.name + " " + each.areaName);
    const bool fits = place ? each.area.Contains(place->latitude, place->longitude)
                            : std::all_of(wanted.begin(), wanted.end(), [&](const auto& word) {
                                return text.find(word) != std::string::npos;
                              });
    if (fits) found.push_back(std::move(each));
  }
  if (found.empty())
    throw UserError(fmt::format(
        "\"{}\": no projected system of the registry is of that name or place", Printable(words)));
  std::stable_sort(found.begin(), found.end(), [](const ListedCrs& a, const ListedCrs& b) {
    return a.area.Surface() < b.area.Surface();
  });
  std::string text;
  for (const ListedCrs& each : found)
    text += fmt::format("EPSG:{} {}\n    {}\n", each.code, each.name, each.areaName);
  return text;
}

}  // namespace geomath_files
