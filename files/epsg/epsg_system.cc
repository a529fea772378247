#include "files/epsg/epsg_system.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "files/epsg/epsg_datum.h"
#include "files/epsg/epsg_projection.h"
#include "files/epsg/epsg_registry.h"
#include "files/epsg/grid_folders.h"
#include "files/epsg/national_frames.h"
#include "files/epsg/operation_chooser.h"
#include "files/epsg/projjson.h"
#include "files/system/ellipsoid_names.h"
#include "files/system/system_document.h"
#include "files/system/system_sections.h"
#include "files/system/units_section.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/frame/frame_change.h"

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

// All that may be taken for a system, best first.
std::vector<CandidateOperation> FindCandidates(const EpsgRegistry& registry,
                                               const GridFolders& folders, const Chosen& chosen,
                                               const DatumWish& wish) {
  const OperationPlace place = wish.near ? PlaceNear(*wish.near) : OperationPlace{chosen.crs.area};
  const OperationChooser chooser(registry, folders);
  const auto find =
      wish.fromFrame.empty() ? &OperationChooser::ToWgs84 : &OperationChooser::ToNational;
  const std::string source = std::to_string(CodeIn(chosen.geographic));
  const std::string projected = chosen.IsProjected() ? chosen.crs.code : "";
  std::vector<CandidateOperation> candidates = (chooser.*find)(source, projected, place);
  const auto wished = [&](const auto& each) { return each.operation.code == wish.operation; };
  if (!wish.operation.empty() && std::none_of(candidates.begin(), candidates.end(), wished))
    if (auto found = chooser.OfCode(wish.operation, source, place))
      candidates.push_back(std::move(*found));
  return candidates;
}

const CandidateOperation& ChooseCandidate(const Chosen& chosen,
                                          const std::vector<CandidateOperation>& candidates,
                                          const DatumWish& wish) {
  if (wish.operation.empty()) {
    if (const CandidateOperation* best = BestUsable(candidates)) return *best;
    const char* const target =
        wish.fromFrame.empty() ? "WGS 84" : "a system that is joined to frames";
    std::string problem = fmt::format("the registry has no transformation to {}", target);
    if (!candidates.empty())
      problem = fmt::format("none of its {} transformations to {} can be taken: {} by {} {}",
                            candidates.size(), target, candidates[0].Title(),
                            candidates[0].Method(), candidates[0].Obstacle());
    chosen.Refuse(problem + kWaysOut);
  }
  const auto taken = std::find_if(candidates.begin(), candidates.end(), [&](const auto& each) {
    return each.operation.code == wish.operation;
  });
  if (taken == candidates.end())
    chosen.Refuse(
        fmt::format("EPSG:{} is none of its transformations{}", wish.operation, kWaysOut));
  if (const std::string obstacle = taken->Obstacle(); !obstacle.empty())
    chosen.Refuse(fmt::format("{} by {}: {}; --grids names a folder to look into{}", taken->Title(),
                              taken->Method(), obstacle, kWaysOut));
  return *taken;
}

// ---- the file ----

// Puts a system file together.
class SystemMaker {
 public:
  SystemMaker(const std::string& code, const DatumWish& wish)
      : chosen_(Choose(registry_, code)),
        wish_(wish),
        folders_(wish.grids, wish.output, EpsgRegistry::ProjFolders()),
        folder_(std::filesystem::path(wish.output).parent_path().string()) {}

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
    // A grid that cannot be used is found out here, not when points are converted.
    if (system_.document.contains("shifts") || system_.document.contains("frame"))
      MakeSystem(system_.document, wish_.output, ProjectionNeed::optional);
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
    system_.document["projection"] = plane_.is_null() ? projection.section : plane_;
    if (!projection.axes.empty()) system_.document["axes"] = {{"grid", projection.axes}};
    // A layer's x and y are east and north: others would be taken for what they are not.
    if (projection.axes.empty()) crs_["grid"] = "EPSG:" + chosen_.crs.code;
    if (projection.unit.metres == 1) return;
    system_.document["units"] = UnitsSection({projection.unit, {}});
    Describe(fmt::format("grid coordinates in {}", projection.unit.name));
    Note(fmt::format("grid coordinates are in units of {} m ({}), heights in metres",
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
    if (IsInNationalFrame()) return AddOwnFrame(ellipsoid);
    if (wish_.none || CodeIn(chosen_.geographic) == kWgs84Code) return AddOwnDatum(ellipsoid, "");
    const std::vector<CandidateOperation> candidates =
        FindCandidates(registry_, folders_, chosen_, wish_);
    const CandidateOperation& taken = ChooseCandidate(chosen_, candidates, wish_);
    for (const std::string& file : taken.Found()) Note("grid " + file);
    NoteChoice(candidates, taken);
    const std::string title = fmt::format("{}, {}", taken.Title(), taken.Accuracy());
    const std::optional<SevenParameters> seven = taken.Parameters();
    if (seven && seven->IsNull() && AreAlike(EllipsoidOf(chosen_.geographic), TargetOf(taken)))
      return AddOwnDatum(ellipsoid, fmt::format(" taken for WGS 84 ({}: no shift)", title));
    if (ownEllipsoid && !IsGeographic(taken))
      chosen_.Refuse(
          "its projection stands on an ellipsoid of its own, beside which no datum fits" +
          kWaysOut);
    if (taken.route)
      AddRoute(taken);
    else if (seven)
      AddParameters(*seven, ellipsoid, TargetOf(taken));
    else
      AddShifts(taken, ellipsoid);
    crs_["geographic"] = "EPSG:" + taken.target;
    Describe(fmt::format("positions on {} by {}", NameOf(taken.target), title));
    if (!wish_.fromFrame.empty()) AddFrame(registry_.Crs(taken.target).name);
  }

  std::string GeographicName() const { return chosen_.geographic.value("name", "?"); }

  // Whether positions on the system's own datum are to be told by their frame: where one is wished
  // for, and where it moves.
  bool IsInNationalFrame() const {
    if (!wish_.operation.empty() || !NationalFrameOf(GeographicName())) return false;
    const json& datum = MemberOf(chosen_.geographic, "datum");
    return !wish_.fromFrame.empty() || datum.contains("frame_reference_epoch");
  }

  void AddOwnFrame(const Ellipsoid& ellipsoid) {
    AddOwnDatum(ellipsoid, "");
    AddFrame(GeographicName());
  }

  // Before the positions of a geographic system, those of the frame that is wished for.
  void AddFrame(const std::string& system) {
    const std::optional<NationalFrame> national = NationalFrameOf(system);
    if (!national)
      chosen_.Refuse(fmt::format("no published parameters lead from a frame to {}", system));
    const ReferenceFrame to =
        wish_.toFrame.empty() ? national->frame : FrameWished("--to-frame", wish_.toFrame);
    const ReferenceFrame from =
        wish_.fromFrame.empty() ? to : FrameWished("--from-frame", wish_.fromFrame);
    const std::unique_ptr<FrameChange> change = FrameChange::Make(from, to);
    if (!change)
      chosen_.Refuse(fmt::format("no published parameters lead from {} to {}", FrameName(from),
                                 FrameName(to)));
    ordered_json& frame = system_.document["frame"];
    frame = {{"from", FrameName(from)}, {"to", FrameName(to)}};
    if (wish_.date) frame["date"] = *wish_.date;
    std::string steps;
    for (const FrameStep& step : change->Steps())
      steps += fmt::format("{}{}{}", steps.empty() ? "" : ", ", step.inverse ? "inverse of " : "",
                           step.transformation->code);
    Describe(fmt::format("which come in {}{}", FrameName(from),
                         steps.empty() ? "" : fmt::format(", to {} by {}", FrameName(to), steps)));
    if (const std::string code = CodeOfFrame(from); !code.empty())
      crs_["geographic"] = "EPSG:" + code;
    if (national->remark && wish_.toFrame.empty())
      Note(std::string(national->remark) + "; --to-frame names another");
    if (national->model) AddModel(national->model, frame);
    if (!wish_.date && (from != to || national->model))
      Note("positions need their date: \"convert\" has --epoch and --epoch-column");
  }

  ReferenceFrame FrameWished(const char* option, const std::string& name) const {
    const std::optional<ReferenceFrame> frame = FrameNamed(name);
    if (!frame) throw UserError(fmt::format("{}: {}", option, UnknownFrame(name)));
    return *frame;
  }

  void AddModel(const std::string& name, ordered_json& frame) {
    const auto found = folders_.Find(name);
    if (!found)
      chosen_.Refuse(fmt::format(
          "needs the file {}, which is not found; --grids names a folder to look into", name));
    frame["motion"] = {{"file", NameBeside(found->path, folder_)}};
    Describe("and are taken to its epoch by " + name);
    Note("deformation model " + found->path);
  }

  static bool IsGeographic(const CandidateOperation& candidate) {
    return std::all_of(candidate.steps.begin(), candidate.steps.end(),
                       [](const auto& step) { return step.space == ShiftSpace::geographic; });
  }

  std::string NameOf(const std::string& code) const {
    if (code == std::to_string(kWgs84Code)) return "WGS 84";
    return fmt::format("EPSG:{} {}", code, registry_.Crs(code).name);
  }

  Ellipsoid TargetOf(const CandidateOperation& candidate) const {
    if (candidate.target == std::to_string(kWgs84Code)) return MakeEllipsoid(kWgs84A, kWgs84InvF);
    return EllipsoidOf(registry_.Crs(candidate.target).document);
  }

  void AddParameters(const SevenParameters& seven, const Ellipsoid& local,
                     const Ellipsoid& global) {
    system_.document["global"] = EllipsoidSection(global);
    system_.document["local"] = EllipsoidSection(local);
    system_.document["datum"] = seven.Section();
    if (seven.SmallAngleError() >= kNoticed)
      Note(
          fmt::format("its large rotations are taken exactly, up to {:.2f} m from the registry's "
                      "small-angle method",
                      seven.SmallAngleError()));
  }

  void AddShifts(const CandidateOperation& taken, const Ellipsoid& local) {
    const Ellipsoid global = TargetOf(taken);
    const std::optional<ShiftEntries> entries =
        EntriesOf(taken.steps, taken.files, EllipsoidOf(chosen_.geographic), global, folder_);
    if (!entries)
      chosen_.Refuse(taken.Title() + " stands on more ellipsoids than a system file has" +
                     kWaysOut);
    if (entries->twoEllipsoids) {
      system_.document["global"] = EllipsoidSection(global);
      system_.document["local"] = EllipsoidSection(local);
      system_.document["datum"] = SevenParameters{}.Section();
    } else {
      system_.document["local"] = EllipsoidSection(local);
    }
    system_.document["shifts"] = entries->shifts;
  }

  // The projection is put into the file behind its datum.
  void AddRoute(const CandidateOperation& taken) {
    ordered_json sections =
        RouteSections(registry_, *taken.route, NameBeside(*taken.routeFile, folder_));
    if (sections.contains("projection")) plane_ = sections.at("projection");
    sections.erase("projection");
    system_.document.update(sections);
  }

  void NoteChoice(const std::vector<CandidateOperation>& candidates,
                  const CandidateOperation& taken) {
    if (taken.covered < kAsGoodAsWhole)
      Note(
          fmt::format("{} covers only {:.0f} % of the system's area ({}); --near LAT,LON finds "
                      "one for a place",
                      taken.Title(), taken.covered * 100, taken.operation.areaName));
    for (const std::string& note : BetterOperations(candidates, taken)) Note(note);
    if (candidates.size() > 1)
      Note(fmt::format("other transformations: {}; --list-operations shows them",
                       candidates.size() - 1));
  }

  const EpsgRegistry registry_;
  const Chosen chosen_;
  const DatumWish& wish_;
  const GridFolders folders_;
  const std::string folder_;  // of the system file
  EpsgSystem system_;
  ordered_json plane_;  // the projection behind which shifts stand, where it is not the system's
  std::string description_;
  ordered_json crs_;  // of the positions and of the grid, by which a GIS knows them
};

}  // namespace

EpsgSystem MakeEpsgSystem(const std::string& code, const DatumWish& wish) {
  return SystemMaker(code, wish).Make();
}

std::string ListEpsgOperations(const std::string& code, const DatumWish& wish) {
  const EpsgRegistry registry;
  const GridFolders folders(wish.grids, wish.output, EpsgRegistry::ProjFolders());
  return ListOperations(FindCandidates(registry, folders, Choose(registry, code), wish));
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
