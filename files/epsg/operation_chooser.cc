#include "files/epsg/operation_chooser.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <span>
#include <string_view>

#include "files/epsg/national_frames.h"
#include "files/epsg/projjson.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"

using namespace zel_cs::geomath;
using nlohmann::json;
using nlohmann::ordered_json;

namespace geomath_files {
namespace {

constexpr const char* kWgs84 = "4326";

// Systems whose transformation to WGS 84 is null in the registry: ETRS89, NAD83 with its successors
// HARN, CSRS and 2011, GDA94 and GDA2020, NZGD2000, SIRGAS 2000, JGD2000 and JGD2011, RGF93, ISN93
// and ISN2016, NAD83(CSRS)v2 to v4. They are positions of their own, which no grid improves.
constexpr std::string_view kTakenForWgs84[] = {"4258", "4269", "4152", "4617", "6318", "4283",
                                               "7844", "4167", "4674", "4612", "6668", "4171",
                                               "4659", "8086", "8237", "8240", "8246"};

// Whether the first serves better: more of the area, then better accuracy.
bool ServesBetter(const CandidateOperation& a, const CandidateOperation& b) {
  const double areaA = std::min(a.covered, kAsGoodAsWhole);
  const double areaB = std::min(b.covered, kAsGoodAsWhole);
  if (areaA != areaB) return areaA > areaB;
  const auto accuracy = [](const CandidateOperation& c) {
    return c.operation.accuracy < 0 ? HUGE_VAL : c.operation.accuracy;
  };
  return accuracy(a) < accuracy(b);
}

// The name of a joined operation without its changes between latitude, longitude and X, Y, Z.
std::string NameOfMoves(const std::string& name) {
  constexpr std::string_view kJoint = " + ", kConversion = "Conversion from ";
  std::string moves;
  for (std::size_t begin = 0; begin < name.size();) {
    const std::size_t end = std::min(name.find(kJoint, begin), name.size());
    const std::string part = name.substr(begin, end - begin);
    if (!part.starts_with(kConversion)) moves += (moves.empty() ? "" : kJoint.data()) + part;
    begin = end + kJoint.size();
  }
  return moves;
}

void Sort(std::vector<CandidateOperation>& candidates) {
  std::stable_sort(candidates.begin(), candidates.end(), ServesBetter);
}

}  // namespace

// ---- a candidate ----

std::string CandidateOperation::Title() const {
  if (!operation.code.empty()) return fmt::format("EPSG:{} {}", operation.code, operation.name);
  const std::string name = NameOfMoves(operation.name);
  const bool one = steps.size() == 1 && !steps[0].code.empty() && !name.empty();
  if (one) return fmt::format("EPSG:{} {}", steps[0].code, name);
  return name.empty() ? operation.name : name;
}

std::string CandidateOperation::Accuracy() const {
  return operation.accuracy < 0 ? "accuracy unknown"
                                : fmt::format("accuracy {} m", operation.accuracy);
}

std::string CandidateOperation::Method() const {
  if (route) return "the publisher's definition";
  std::vector<std::string> methods;
  for (const OperationStep& step : steps) methods.push_back(step.method);
  return methods.empty() ? "no shift" : fmt::format("{}", fmt::join(methods, " + "));
}

std::optional<SevenParameters> CandidateOperation::Parameters() const {
  if (route) return std::nullopt;
  std::vector<RegisteredSimilarity> similarities;
  for (const OperationStep& step : steps) {
    if (!step.similarity) return std::nullopt;
    similarities.push_back(*step.similarity);
  }
  return JoinSimilarities(similarities);
}

bool CandidateOperation::HasGrid() const {
  return route || std::any_of(steps.begin(), steps.end(),
                              [](const OperationStep& step) { return !step.grids.empty(); });
}

bool CandidateOperation::IsDated() const {
  return std::any_of(steps.begin(), steps.end(),
                     [](const OperationStep& step) { return step.dated; });
}

bool CandidateOperation::IsKnown() const {
  return std::all_of(steps.begin(), steps.end(),
                     [](const OperationStep& step) { return step.known; });
}

std::vector<std::string> CandidateOperation::Missing() const {
  std::vector<std::string> missing;
  if (route && !routeFile) missing.emplace_back(route->file);
  for (std::size_t i = 0; i < steps.size(); ++i) {
    if (steps[i].grids.empty() || files[i]) continue;
    std::vector<std::string> names;
    for (const GridName& grid : steps[i].grids) names.push_back(grid.name);
    missing.push_back(fmt::format("{}", fmt::join(names, " or ")));
  }
  return missing;
}

std::vector<std::string> CandidateOperation::Found() const {
  std::vector<std::string> found;
  if (routeFile) found.push_back(*routeFile);
  for (const std::optional<StepFile>& file : files)
    if (file) found.push_back(file->path);
  return found;
}

std::string CandidateOperation::Obstacle() const {
  if (!IsKnown()) return "has a method that is not known here";
  const std::vector<std::string> missing = Missing();
  if (missing.empty()) return "";
  return fmt::format("needs the file {}, which is not found", fmt::join(missing, ", "));
}

std::string ListOperations(const std::vector<CandidateOperation>& candidates) {
  std::string text;
  for (const CandidateOperation& each : candidates) {
    std::string remark = each.Obstacle();
    if (remark.empty()) remark = fmt::format("{}", fmt::join(each.Found(), ", "));
    text += fmt::format("{}\n    {}; {:.0f} % of the area: {}\n    {}{}{}\n", each.Title(),
                        each.Accuracy(), each.covered * 100, each.operation.areaName, each.Method(),
                        remark.empty() ? "" : ": ", remark);
  }
  return text;
}

const CandidateOperation* BestUsable(const std::vector<CandidateOperation>& candidates) {
  const auto best = std::find_if(candidates.begin(), candidates.end(),
                                 [](const auto& each) { return each.IsUsable(); });
  return best == candidates.end() ? nullptr : &*best;
}

std::vector<std::string> BetterOperations(const std::vector<CandidateOperation>& candidates,
                                          const CandidateOperation& taken) {
  std::vector<std::string> notes, told;
  for (const CandidateOperation& each : candidates) {
    const std::string obstacle = each.Obstacle();
    const bool better = each.operation.accuracy >= 0 && each.covered >= taken.covered &&
                        each.operation.accuracy < taken.operation.accuracy;
    if (!better || obstacle.empty()) continue;
    if (std::find(told.begin(), told.end(), obstacle) != told.end()) continue;
    notes.push_back(fmt::format("{}, {}, is better and {}; without it: {}", each.Title(),
                                each.Accuracy(), obstacle, taken.Accuracy()));
    told.push_back(obstacle);
  }
  return notes;
}

// ---- the choice ----

OperationPlace PlaceNear(const Position& position) {
  const auto check = [](double angle, AngleKind kind, const char* name) {
    if (const std::string problem = AngleRangeProblem(angle, kind); !problem.empty())
      throw UserError(fmt::format("the {} of the place: {}", name, problem));
  };
  check(position.latitude, AngleKind::latitude, "latitude");
  check(position.longitude, AngleKind::longitude, "longitude");
  const double longitude = std::remainder(position.longitude, 360);
  return {{longitude, position.latitude, longitude, position.latitude}, true};
}

std::optional<StepFile> OperationChooser::FileOf(const OperationStep& step) const {
  std::optional<GridFolders::Found> best;
  bool inverse = false;
  for (const GridName& grid : step.grids) {
    const std::optional<GridFolders::Found> found = folders_.Find(grid.name);
    if (!found || (best && best->folder <= found->folder)) continue;
    best = found;
    inverse = grid.inverse;
  }
  if (best) return StepFile{best->path, inverse};
  // Under the name that a file had before PROJ 7.
  for (const GridName& grid : step.grids)
    if (std::string path = registry_.FindInProj(grid.name); IsReadableGrid(path))
      return StepFile{std::move(path), grid.inverse};
  return std::nullopt;
}

CandidateOperation OperationChooser::Prepare(RegisteredOperation operation,
                                             const std::string& target,
                                             const OperationPlace& place) const {
  CandidateOperation candidate;
  candidate.covered = place.point ? operation.area.Contains(place.area.south, place.area.west)
                                  : place.area.CoveredBy(operation.area);
  candidate.steps = *operation.steps;
  for (const OperationStep& step : candidate.steps) candidate.files.push_back(FileOf(step));
  candidate.operation = std::move(operation);
  candidate.target = target;
  return candidate;
}

std::vector<CandidateOperation> OperationChooser::Unsorted(const std::string& source,
                                                           const std::string& target,
                                                           const OperationPlace& place,
                                                           Joining joining) const {
  std::vector<CandidateOperation> candidates;
  for (const RegisteredOperation& operation :
       registry_.Operations(source, target, place.area, joining))
    candidates.push_back(Prepare(operation, target, place));
  return candidates;
}

std::vector<CandidateOperation> OperationChooser::Between(const std::string& source,
                                                          const std::string& target,
                                                          const OperationPlace& place,
                                                          Joining joining) const {
  std::vector<CandidateOperation> candidates = Unsorted(source, target, place, joining);
  Sort(candidates);
  return candidates;
}

// To WGS 84 the registry's null transformation leads on, EPSG:1149, which is good to a metre.
void OperationChooser::AddRoutes(const std::string& source, const std::string& projected,
                                 const std::string& target, bool reversed,
                                 const OperationPlace& place,
                                 std::vector<CandidateOperation>& candidates) const {
  constexpr const char* kEtrs89 = "4258";
  constexpr double kTakenForWgs84Accuracy = 1;  // metres
  for (CandidateOperation& each : Routes(source, projected, place)) {
    const bool leadsOn = each.target == kEtrs89 && target == kWgs84;
    if (each.target != target && !leadsOn) continue;
    std::string& name = each.operation.name;
    if (leadsOn) {
      each.operation.accuracy = std::max(each.operation.accuracy, kTakenForWgs84Accuracy);
      name += " + ETRS89 to WGS 84 (1)";
    }
    if (reversed) name = "Inverse of " + name;
    each.routeReversed = reversed;
    each.target = reversed ? source : target;
    candidates.push_back(std::move(each));
  }
}

std::vector<CandidateOperation> OperationChooser::BetweenEnds(const std::string& source,
                                                              const std::string& sourceProjected,
                                                              const std::string& target,
                                                              const std::string& targetProjected,
                                                              const OperationPlace& place) const {
  std::vector<CandidateOperation> candidates;
  AddRoutes(source, sourceProjected, target, false, place, candidates);
  AddRoutes(target, targetProjected, source, true, place, candidates);
  for (CandidateOperation& each : Unsorted(source, target, place, Joining::allowed))
    candidates.push_back(std::move(each));
  Sort(candidates);
  return candidates;
}

std::vector<CandidateOperation> OperationChooser::Routes(const std::string& source,
                                                         const std::string& projected,
                                                         const OperationPlace& place) const {
  std::vector<CandidateOperation> candidates;
  for (const PublisherRoute& route : PublisherRoutes()) {
    const std::string system = std::to_string(route.system);
    if (system != source && system != projected) continue;
    const RegisteredCrs& crs = registry_.Crs(system);
    CandidateOperation candidate;
    candidate.operation.name = route.title;
    candidate.operation.accuracy = route.accuracy;
    candidate.operation.area = crs.area;
    candidate.operation.areaName = crs.name;
    candidate.target = std::to_string(route.target);
    candidate.route = &route;
    if (const auto found = folders_.Find(route.file)) candidate.routeFile = found->path;
    if (place.point) candidate.covered = crs.area.Contains(place.area.south, place.area.west);
    if (candidate.covered > 0) candidates.push_back(std::move(candidate));
  }
  return candidates;
}

std::vector<CandidateOperation> OperationChooser::ToNational(const std::string& source,
                                                             const std::string& projected,
                                                             const OperationPlace& place) const {
  std::vector<CandidateOperation> candidates = Routes(source, projected, place);
  for (const char* system : NationalSystems())
    for (CandidateOperation& each : Unsorted(source, system, place, Joining::none))
      if (!each.operation.code.empty()) candidates.push_back(std::move(each));
  Sort(candidates);
  return candidates;
}

std::vector<CandidateOperation> OperationChooser::ToWgs84(const std::string& source,
                                                          const std::string& projected,
                                                          const OperationPlace& place) const {
  // Routes first: of two that are equally good the publisher's is taken.
  std::vector<CandidateOperation> candidates = Routes(source, projected, place);
  for (CandidateOperation& each : Unsorted(source, kWgs84, place, Joining::allowed))
    if (!each.IsDated()) candidates.push_back(std::move(each));
  const auto frames = std::span(kTakenForWgs84);
  if (std::find(frames.begin(), frames.end(), source) == frames.end())
    for (const std::string_view frame : frames)
      for (CandidateOperation& each : Unsorted(source, std::string(frame), place, Joining::none))
        if (each.HasGrid() && !each.operation.code.empty()) candidates.push_back(std::move(each));
  Sort(candidates);
  return candidates;
}

std::string OperationChooser::EndOf(const json& crs) const {
  const std::string type = crs.value("type", "");
  const std::string code = std::to_string(CodeIn(crs));
  if (type == "CompoundCRS") return registry_.Crs(code).vertical;
  const bool ofPositions = type == "GeographicCRS" || type == "GeodeticCRS";
  return ofPositions ? registry_.Crs(code).geographic : code;
}

std::optional<CandidateOperation> OperationChooser::OfCode(const std::string& code,
                                                           const std::string& source,
                                                           const OperationPlace& place) const {
  std::optional<RegisteredOperation> published = registry_.Operation(code);
  if (!published) return std::nullopt;
  const std::string from = EndOf(MemberOf(*published->document, "source_crs"));
  const std::string to = EndOf(MemberOf(*published->document, "target_crs"));
  if (from != source && to != source) return std::nullopt;
  if (from == source) return Prepare(std::move(*published), to, place);
  std::optional<RegisteredOperation> turnedRound = registry_.Operation(code, true);
  if (!turnedRound) return std::nullopt;
  return Prepare(std::move(*turnedRound), from, place);
}

// ---- in a system file ----

std::string NameBeside(const std::string& path, const std::string& folder) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path at = fs::absolute(path, error).lexically_normal();
  const fs::path beside = fs::absolute(folder.empty() ? "." : folder, error).lexically_normal();
  return fs::equivalent(at.parent_path(), beside, error) ? at.filename().string() : at.string();
}

namespace {

// A step at which coordinates on the ellipsoid of the source become some on that of the target. Only
// steps of geocentric coordinates depend on ellipsoids, where they begin and where they end.
using Steps = std::span<const OperationStep>;

bool IsGeocentric(const OperationStep& step) { return step.space == ShiftSpace::geocentric; }

bool CanChangeAt(Steps steps, std::size_t change, const Ellipsoid& source,
                 const Ellipsoid& target) {
  for (std::size_t i = 0; i < steps.size(); ++i) {
    if (!IsGeocentric(steps[i])) continue;
    const bool begins = i == 0 || !IsGeocentric(steps[i - 1]);
    const bool ends = i + 1 == steps.size() || !IsGeocentric(steps[i + 1]);
    if (begins && !AreAlike(steps[i].source, i <= change ? source : target)) return false;
    if (ends && !AreAlike(steps[i].target, i < change ? source : target)) return false;
  }
  return true;
}

// The number of steps that stand behind the datum; nothing where no place is right.
std::optional<std::size_t> StepsBehindDatum(Steps steps, const Ellipsoid& source,
                                            const Ellipsoid& target) {
  const auto first = std::find_if(steps.begin(), steps.end(), IsGeocentric);
  if (first == steps.end()) return 0;
  const auto last = std::find_if(steps.rbegin(), steps.rend(), IsGeocentric);
  const auto begin = static_cast<std::size_t>(first - steps.begin());
  const auto end = static_cast<std::size_t>(last.base() - steps.begin());
  if (CanChangeAt(steps, begin, source, target)) return begin;
  if (CanChangeAt(steps, end - 1, source, target)) return end;
  return std::nullopt;
}

}  // namespace

std::optional<ShiftEntries> EntriesOf(std::span<const OperationStep> steps,
                                      std::span<const std::optional<StepFile>> files,
                                      const Ellipsoid& source, const Ellipsoid& target,
                                      const std::string& folder) {
  const std::optional<std::size_t> behind = StepsBehindDatum(steps, source, target);
  if (!behind) return std::nullopt;
  ShiftEntries entries;
  entries.twoEllipsoids = std::any_of(steps.begin(), steps.end(), IsGeocentric);
  entries.shifts = ordered_json::array();
  for (std::size_t i = steps.size(); i-- > 0;) {
    const OperationStep& step = steps[i];
    const std::optional<StepFile>& file = files[i];
    ordered_json entry;
    if (file) entry["file"] = NameBeside(file->path, folder);
    entry.update(step.entry);
    entry["place"] = i < *behind ? "after datum" : "before datum";
    // A system file leads the other way.
    if (step.inverse == (file && file->inverse)) entry["inverse"] = "yes";
    entries.shifts.push_back(std::move(entry));
  }
  return entries;
}

}  // namespace geomath_files
