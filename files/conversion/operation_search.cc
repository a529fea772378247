#include "files/conversion/operation_search.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "files/epsg/frame_operation.h"
#include "files/epsg/national_frames.h"
#include "files/epsg/projjson.h"
#include "files/words/user_error.h"

using nlohmann::json;

namespace geomath_files {
namespace {

constexpr const char* kWaysOut = "; --list-operations lists them";

// The place where an operation is to be good: what the two areas share, or the smaller one.
GeoBox SharedArea(const GeoBox& a, const GeoBox& b) {
  const bool plain = a.west <= a.east && b.west <= b.east;
  const GeoBox shared{std::max(a.west, b.west), std::max(a.south, b.south),
                      std::min(a.east, b.east), std::min(a.north, b.north)};
  if (plain && shared.west < shared.east && shared.south < shared.north) return shared;
  return a.Surface() <= b.Surface() ? a : b;
}

OperationPlace PlaceOf(const ConversionEnd& source, const ConversionEnd& target,
                       const ConversionWish& wish) {
  if (wish.near) return PlaceNear(*wish.near);
  return {SharedArea(source.Area(), target.Area())};
}

bool HasHeights(const ConversionEnd& end) {
  return end.HasEllipsoidalHeights() || !end.Vertical().empty();
}

// Empty for a system that is not geographic.
std::string DatumNameOf(const json& crs) {
  if (!crs.is_object()) return "";
  const char* frame = crs.contains("datum_ensemble") ? "datum_ensemble" : "datum";
  return crs.value("type", "") == "GeographicCRS" && crs.contains(frame)
             ? crs.at(frame).value("name", "")
             : "";
}

bool IsAnyUsable(const std::vector<CandidateOperation>& candidates) {
  return BestUsable(candidates) != nullptr;
}

// One that nobody knows counts as the worst.
double AccuracyOf(const CandidateOperation& candidate) {
  const double accuracy = candidate.operation.accuracy;
  return accuracy < 0 ? std::numeric_limits<double>::max() : accuracy;
}

}  // namespace

bool ChangesHeights(const ConversionEnd& source, const ConversionEnd& target) {
  if (source.Kind() == EndKind::geocentric || target.Kind() == EndKind::geocentric) return true;
  if (!HasHeights(source) || !HasHeights(target)) return false;
  return source.Vertical().empty() || source.Vertical() != target.Vertical();
}

std::string HeightNote(const ConversionEnd& source, const ConversionEnd& target) {
  if (ChangesHeights(source, target) || HasHeights(source) == HasHeights(target)) return {};
  const ConversionEnd& without = HasHeights(source) ? target : source;
  return fmt::format("heights stay as they are: {} says nothing of them", without.Title());
}

OperationSearch::OperationSearch(const EpsgRegistry& registry, const ConversionEnd& source,
                                 const ConversionEnd& target, const ConversionWish& wish)
    : registry_(registry),
      source_(source),
      target_(target),
      wish_(wish),
      place_(PlaceOf(source, target, wish)),
      folders_(wish.grids, wish.beside, EpsgRegistry::ProjFolders()),
      chooser_(registry, folders_) {}

std::vector<ConversionStage> OperationSearch::Plan() const {
  const std::string &from = source_.Geographic(), &to = target_.Geographic();
  const std::string &low = source_.Vertical(), &high = target_.Vertical();
  if (!ChangesHeights(source_, target_)) return Positions({from, to}, true);
  if (low.empty() && high.empty()) return Positions({from, to}, false);
  if (!low.empty() && !high.empty())
    if (auto direct = BetweenHeights(low, high)) return std::move(*direct);
  // By way of heights above the ellipsoid.
  Geoid before = low.empty() ? Geoid{from, from} : FindGeoid(low, true);
  Geoid behind = high.empty() ? Geoid{to, to} : FindGeoid(high, false);
  std::vector<ConversionStage> stages = Positions({from, before.beside}, true);
  const auto add = [&](std::vector<ConversionStage> more) {
    for (ConversionStage& each : more) stages.push_back(std::move(each));
  };
  if (!low.empty())
    stages.push_back({low, before.positions, false, true, std::move(before.candidates)});
  add(Positions({before.positions, behind.positions}, false));
  if (!high.empty())
    stages.push_back({behind.positions, high, false, true, std::move(behind.candidates)});
  add(Positions({behind.beside, to}, true));
  return stages;
}

std::vector<const CandidateOperation*> OperationSearch::Choose(const ConversionStage& stage,
                                                               bool& wished) const {
  const auto found = FindWished(stage.candidates);
  if (found) {
    wished = true;
    return {found};
  }
  std::vector<const CandidateOperation*> chosen;
  for (const CandidateOperation& each : stage.candidates)
    if (each.IsUsable()) chosen.push_back(&each);
  if (chosen.empty()) Complain(stage.candidates);
  if (wish_.one || wish_.near) return {chosen.front()};
  std::stable_sort(chosen.begin(), chosen.end(),
                   [](const auto* a, const auto* b) { return AccuracyOf(*a) < AccuracyOf(*b); });
  return chosen;
}

void OperationSearch::RefuseWished() const {
  throw UserError(
      fmt::format("EPSG:{} is no operation {}{}", wish_.operation, Between(), kWaysOut));
}

std::vector<ConversionStage> OperationSearch::Positions(
    const std::pair<std::string, std::string>& systems, bool keepsHeights) const {
  const auto& [from, to] = systems;
  if (from == to) return {};
  ConversionStage stage{from, to, keepsHeights};
  const auto grid = [](const ConversionEnd& end, const std::string& positions) {
    return end.Geographic() == positions ? end.Projected() : std::string();
  };
  stage.candidates = chooser_.BetweenEnds(from, grid(source_, from), to, grid(target_, to), place_);
  AddWished(from, to, stage.candidates);
  const auto alone = [&] {
    std::vector<ConversionStage> stages;
    stages.push_back(std::move(stage));
    return stages;
  };
  if (IsAnyUsable(stage.candidates)) {
    PreferUsualFrame(stage);
    return alone();
  }
  if (auto frames = FrameOperation(registry_, folders_, from, to))
    stage.candidates.push_back(std::move(*frames));
  else if (auto stages = ByNationalSystem(stage))
    return std::move(*stages);
  return alone();
}

// The registry takes every realisation of ETRS89 for it, one as good as the other, and its next version
// knows another first: the usual one goes before them.
void OperationSearch::PreferUsualFrame(ConversionStage& stage) const {
  constexpr double kOfEnsembles = 0.1;  // metres, as the registry states it
  const CandidateOperation* best = BestUsable(stage.candidates);
  if (!best->IsDated() || AccuracyOf(*best) < kOfEnsembles) return;
  auto usual = FrameOperation(registry_, folders_, stage.from, stage.to);
  if (!usual || !usual->IsUsable()) return;
  usual->operation.accuracy = AccuracyOf(*best);
  stage.candidates.insert(stage.candidates.begin(), std::move(*usual));
}

// By the table of frames as far as a national system, and by the registry from there, or the other way
// round; nothing where no such way is open. Of several the most accurate.
std::optional<std::vector<ConversionStage>> OperationSearch::ByNationalSystem(
    const ConversionStage& whole) const {
  std::optional<std::vector<ConversionStage>> best;
  double accuracy = std::numeric_limits<double>::infinity();
  for (const char* system : NationalSystems()) {
    for (const bool framesFirst : {true, false}) {
      ConversionStage first{whole.from, system, whole.keepsHeights};
      ConversionStage second{system, whole.to, whole.keepsHeights};
      ConversionStage& frames = framesFirst ? first : second;
      ConversionStage& registered = framesFirst ? second : first;
      auto own = FrameOperation(registry_, folders_, frames.from, frames.to);
      if (!own || !own->IsUsable()) continue;
      registered.candidates =
          chooser_.Between(registered.from, registered.to, place_, Joining::none);
      const CandidateOperation* usable = BestUsable(registered.candidates);
      if (!usable || AccuracyOf(*usable) >= accuracy) continue;
      accuracy = AccuracyOf(*usable);
      frames.candidates.push_back(std::move(*own));
      best.emplace().push_back(std::move(first));
      best->push_back(std::move(second));
    }
  }
  return best;
}

// From one system of heights to another, at positions of the system in which its grids are.
std::optional<std::vector<ConversionStage>> OperationSearch::BetweenHeights(
    const std::string& low, const std::string& high) const {
  auto candidates = chooser_.Between(low, high, place_, Joining::none);
  AddWished(low, high, candidates);
  const CandidateOperation* wished = FindWished(candidates);
  const CandidateOperation* best = wished ? wished : BestUsable(candidates);
  if (!best) return std::nullopt;
  const int code = CodeIn(MemberOf(*best->operation.document, "interpolation_crs"));
  const std::string positions = code ? std::to_string(code) : source_.Geographic();
  std::vector<ConversionStage> stages = Positions({source_.Geographic(), positions}, true);
  stages.push_back({low, high, false, true, std::move(candidates)});
  for (ConversionStage& each : Positions({positions, target_.Geographic()}, true))
    stages.push_back(std::move(each));
  return stages;
}

// The one of the user's choice, where it is one of the heights.
std::optional<OperationSearch::Geoid> OperationSearch::WishedGeoid(const std::string& heights,
                                                                   bool toEllipsoid) const {
  if (wish_.operation.empty()) return std::nullopt;
  auto found = chooser_.OfCode(wish_.operation, heights, place_);
  if (!found || registry_.Crs(found->target).geographic.empty()) return std::nullopt;
  Geoid geoid{found->target, found->target};
  const int below = CodeIn(MemberOf(*found->operation.document, "source_crs"));
  const std::string& horizontal = registry_.Crs(std::to_string(below)).horizontal;
  if (!horizontal.empty()) geoid.beside = registry_.Crs(horizontal).geographic;
  if (!toEllipsoid) found = chooser_.OfCode(wish_.operation, found->target, place_);
  geoid.candidates.push_back(std::move(*found));
  FindWished(geoid.candidates);
  return geoid;
}

// Those of the two systems first, then those that are known the world over. PROJ also names geoids of
// other datums, as if positions on both were the same.
OperationSearch::Geoid OperationSearch::FindGeoid(const std::string& heights,
                                                  bool toEllipsoid) const {
  if (auto wished = WishedGeoid(heights, toEllipsoid)) return std::move(*wished);
  Geoid unusable;
  std::vector<std::string> systems = {source_.Geographic(), target_.Geographic()};
  for (const char* each : {"4258", "4326", "4269", "6318", "4283", "7844", "4167", "4674", "4617",
                           "4612", "6668", "4171"})
    systems.emplace_back(each);
  for (const std::string& system : systems) {
    const std::string above = system + "+h";
    auto candidates = toEllipsoid ? chooser_.Between(heights, above, place_, Joining::none)
                                  : chooser_.Between(above, heights, place_, Joining::none);
    const std::string datum = DatumNameOf(registry_.Crs(system).document);
    std::erase_if(candidates, [&](const CandidateOperation& each) {
      const json& document = *each.operation.document;
      return DatumNameOf(MemberOf(document, toEllipsoid ? "target_crs" : "source_crs")) != datum;
    });
    if (IsAnyUsable(candidates)) return {system, system, std::move(candidates)};
    if (unusable.candidates.empty()) unusable = {system, system, std::move(candidates)};
  }
  Complain(unusable.candidates);
}

std::string OperationSearch::Between() const {
  return fmt::format("from {} to {}", source_.Title(), target_.Title());
}

// Those that are superseded or deprecated are not among the registry's answers.
void OperationSearch::AddWished(const std::string& from, const std::string& to,
                                std::vector<CandidateOperation>& candidates) const {
  if (wish_.operation.empty() || FindWished(candidates)) return;
  auto found = chooser_.OfCode(wish_.operation, from, place_);
  if (found && found->target == to) candidates.push_back(std::move(*found));
}

// By its code, or as a step of one that has none; null where it is not among them.
const CandidateOperation* OperationSearch::FindWished(
    const std::vector<CandidateOperation>& candidates) const {
  if (wish_.operation.empty()) return nullptr;
  const auto isStep = [&](const OperationStep& step) { return step.code == wish_.operation; };
  const auto has = [&](const CandidateOperation& each) {
    return each.operation.code == wish_.operation ||
           (each.operation.code.empty() &&
            std::any_of(each.steps.begin(), each.steps.end(), isStep));
  };
  const auto found = std::find_if(candidates.begin(), candidates.end(), has);
  if (found == candidates.end()) return nullptr;
  if (const std::string obstacle = found->Obstacle(); !obstacle.empty())
    throw UserError(fmt::format("{} by {}: {}{}", found->Title(), found->Method(), obstacle,
                                found->IsKnown() ? "; --grids names a folder to look into" : ""));
  return &*found;
}

void OperationSearch::Complain(const std::vector<CandidateOperation>& candidates) const {
  if (candidates.empty()) {
    const std::string place = wish_.near ? fmt::format(" at latitude {}, longitude {}",
                                                       wish_.near->latitude, wish_.near->longitude)
                                         : "";
    throw UserError(fmt::format("the registry has no operation {}{}", Between(), place));
  }
  // What lacks a file only is nearer than what lacks a method.
  const auto known = std::find_if(candidates.begin(), candidates.end(),
                                  [](const auto& each) { return each.IsKnown(); });
  const CandidateOperation& best = known == candidates.end() ? candidates.front() : *known;
  const std::string none =
      candidates.size() == 1
          ? fmt::format("the operation {} cannot", Between())
          : fmt::format("none of the {} operations {} can", candidates.size(), Between());
  throw UserError(fmt::format("{} be taken: {} by {}: {}{}", none, best.Title(), best.Method(),
                              best.Obstacle(), kWaysOut));
}

}  // namespace geomath_files
