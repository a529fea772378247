#include "files/conversion/conversion.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "files/conversion/operation_leg.h"
#include "files/epsg/epsg_registry.h"
#include "files/epsg/frame_operation.h"
#include "files/epsg/grid_folders.h"
#include "files/epsg/national_frames.h"
#include "files/epsg/operation_chooser.h"
#include "files/epsg/projjson.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_files {
namespace {

constexpr const char* kWaysOut = "; --list-operations lists them";

// ---- the search ----

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
  if (!wish.near) return {SharedArea(source.Area(), target.Area())};
  const auto [latitude, longitude] = *wish.near;
  return {{longitude, latitude, longitude, latitude}, true};
}

bool HasHeights(const ConversionEnd& end) {
  return end.HasEllipsoidalHeights() || !end.Vertical().empty();
}

// Whether heights are changed: both systems have some, of two kinds or above two ellipsoids. Behind X, Y
// and Z there always are heights, which then are above the ellipsoid on the other side too.
bool ChangesHeights(const ConversionEnd& source, const ConversionEnd& target) {
  if (source.Kind() == EndKind::geocentric || target.Kind() == EndKind::geocentric) return true;
  if (!HasHeights(source) || !HasHeights(target)) return false;
  return source.Vertical().empty() || source.Vertical() != target.Vertical();
}

// One step of the way: what leads from one system of positions, or of heights, to the next.
struct Stage {
  std::string from, to;       // as the registry is asked for operations
  bool keepsHeights = false;  // though its operations may change them
  bool vertical = false;
  std::vector<CandidateOperation> candidates = {};
};

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

// Plans the way and chooses its operations.
class Search {
 public:
  Search(const EpsgRegistry& registry, const ConversionEnd& source, const ConversionEnd& target,
         const ConversionWish& wish)
      : registry_(registry),
        source_(source),
        target_(target),
        wish_(wish),
        place_(PlaceOf(source, target, wish)),
        folders_(wish.grids, wish.beside, EpsgRegistry::ProjFolders()),
        chooser_(registry, folders_) {}

  // Empty where positions and heights of both are the same.
  std::vector<Stage> Plan() const {
    const std::string &from = source_.Geographic(), &to = target_.Geographic();
    const std::string &low = source_.Vertical(), &high = target_.Vertical();
    if (!ChangesHeights(source_, target_)) return Positions({from, to}, true);
    if (low.empty() && high.empty()) return Positions({from, to}, false);
    if (!low.empty() && !high.empty())
      if (const auto direct = BetweenHeights(low, high)) return *direct;
    // By way of heights above the ellipsoid.
    const Geoid before = low.empty() ? Geoid{from, {}} : FindGeoid(low, true);
    const Geoid behind = high.empty() ? Geoid{to, {}} : FindGeoid(high, false);
    std::vector<Stage> stages = Positions({from, before.positions}, true);
    const auto add = [&](std::vector<Stage> more) {
      for (Stage& each : more) stages.push_back(std::move(each));
    };
    if (!low.empty()) add({{low, before.positions, false, true, before.candidates}});
    add(Positions({before.positions, behind.positions}, false));
    if (!high.empty()) add({{behind.positions, high, false, true, behind.candidates}});
    add(Positions({behind.positions, to}, true));
    return stages;
  }

  // Those of a stage that points may take, best first; `wished` where they are the user's choice.
  std::vector<const CandidateOperation*> Choose(const Stage& stage, bool& wished) const {
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

  [[noreturn]] void RefuseWished() const {
    throw UserError(
        fmt::format("EPSG:{} is no operation {}{}", wish_.operation, Between(), kWaysOut));
  }

 private:
  // A system of positions above whose ellipsoid a geoid is known.
  struct Geoid {
    std::string positions;
    std::vector<CandidateOperation> candidates;
  };

  std::vector<Stage> Positions(const std::pair<std::string, std::string>& systems,
                               bool keepsHeights) const {
    const auto& [from, to] = systems;
    if (from == to) return {};
    Stage stage{from, to, keepsHeights};
    stage.candidates = chooser_.Between(from, to, place_);
    if (!wish_.operation.empty() && !FindWished(stage.candidates))
      if (auto found = chooser_.OfCode(wish_.operation, from, place_))
        if (found->target == to) stage.candidates.push_back(std::move(*found));
    if (IsAnyUsable(stage.candidates)) return {stage};
    if (auto frames = FrameOperation(registry_, folders_, from, to))
      stage.candidates.push_back(std::move(*frames));
    else if (auto stages = ByNationalSystem(stage))
      return *stages;
    return {stage};
  }

  // By the table of frames as far as a national system, and by the registry from there, or the other way
  // round; nothing where no such way is open. Of several the most accurate.
  std::optional<std::vector<Stage>> ByNationalSystem(const Stage& whole) const {
    std::optional<std::vector<Stage>> best;
    double accuracy = std::numeric_limits<double>::infinity();
    for (const char* system : NationalSystems()) {
      for (const bool framesFirst : {true, false}) {
        Stage frames{whole.from, system, whole.keepsHeights};
        Stage registered{system, whole.to, whole.keepsHeights};
        if (!framesFirst) {
          frames = {system, whole.to, whole.keepsHeights};
          registered = {whole.from, system, whole.keepsHeights};
        }
        auto own = FrameOperation(registry_, folders_, frames.from, frames.to);
        if (!own || !own->IsUsable()) continue;
        registered.candidates =
            chooser_.Between(registered.from, registered.to, place_, Joining::none);
        const CandidateOperation* usable = BestUsable(registered.candidates);
        if (!usable || AccuracyOf(*usable) >= accuracy) continue;
        accuracy = AccuracyOf(*usable);
        frames.candidates.push_back(std::move(*own));
        best = framesFirst ? std::vector{std::move(frames), std::move(registered)}
                           : std::vector{std::move(registered), std::move(frames)};
      }
    }
    return best;
  }

  // From one system of heights to another, at positions of the system in which its grids are.
  std::optional<std::vector<Stage>> BetweenHeights(const std::string& low,
                                                   const std::string& high) const {
    auto candidates = chooser_.Between(low, high, place_, Joining::none);
    const CandidateOperation* best = BestUsable(candidates);
    if (!best) return std::nullopt;
    const json place = best->operation.document.value("interpolation_crs", json::object());
    const int code = CodeIn(place);
    const std::string positions = code ? std::to_string(code) : source_.Geographic();
    std::vector<Stage> stages = Positions({source_.Geographic(), positions}, true);
    stages.push_back({low, high, false, true, std::move(candidates)});
    for (Stage& each : Positions({positions, target_.Geographic()}, true))
      stages.push_back(std::move(each));
    return stages;
  }

  // Those of the two systems first, then those that are known the world over. PROJ also names geoids of
  // other datums, as if positions on both were the same.
  Geoid FindGeoid(const std::string& heights, bool toEllipsoid) const {
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
        const json& document = each.operation.document;
        return DatumNameOf(document.value(toEllipsoid ? "target_crs" : "source_crs", json())) !=
               datum;
      });
      if (IsAnyUsable(candidates)) return {system, std::move(candidates)};
      if (unusable.candidates.empty()) unusable = {system, std::move(candidates)};
    }
    Complain(unusable.candidates);
  }

  std::string Between() const {
    return fmt::format("from {} to {}", source_.Title(), target_.Title());
  }

  // By its code, or as a step of one that has none; null where it is not among them.
  const CandidateOperation* FindWished(const std::vector<CandidateOperation>& candidates) const {
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
      throw UserError(fmt::format("{} by {}: {}; --grids names a folder to look into",
                                  found->Title(), found->Method(), obstacle));
    return &*found;
  }

  [[noreturn]] void Complain(const std::vector<CandidateOperation>& candidates) const {
    if (candidates.empty())
      throw UserError(fmt::format("the registry has no operation {}", Between()));
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

  const EpsgRegistry& registry_;
  const ConversionEnd &source_, &target_;
  const ConversionWish& wish_;
  const OperationPlace place_;
  const GridFolders folders_;
  const OperationChooser chooser_;
};

std::string HeightNote(const ConversionEnd& source, const ConversionEnd& target) {
  if (ChangesHeights(source, target) || HasHeights(source) == HasHeights(target)) return {};
  const ConversionEnd& without = HasHeights(source) ? target : source;
  return fmt::format("heights stay as they are: {} says nothing of them", without.Title());
}

}  // namespace

// ---- the conversion ----

// Operations of a stage, ready to be run; const, and for many threads at once.
class StageRun {
 public:
  StageRun(const Stage& stage, const std::vector<const CandidateOperation*>& chosen,
           bool everywhere)
      : keepsHeights_(stage.keepsHeights), vertical_(stage.vertical), everywhere_(everywhere) {
    for (const CandidateOperation* each : chosen)
      legs_.push_back(std::make_unique<OperationLeg>(*each));
  }

  using Columns = std::array<double*, 3>;
  static constexpr std::size_t kBlock = OperationLeg::kMostPoints;

  const std::vector<std::unique_ptr<OperationLeg>>& Legs() const { return legs_; }
  bool IsVertical() const { return vertical_; }
  bool NeedsDates() const {
    return std::any_of(legs_.begin(), legs_.end(),
                       [](const auto& leg) { return leg->NeedsDates(); });
  }

  // Runs the points that have not failed yet.
  void Run(const Columns& columns, std::size_t count, ConversionOutcome* outcomes, PointDates dates,
           bool inverse) const;

 private:
  using Numbers = std::array<std::uint16_t, kBlock>;

  void RunLeg(std::size_t leg, const Columns& columns, std::size_t count, ChainStep* failed,
              PointDates dates, bool inverse) const;
  void Undo(const OperationLeg& leg, const Columns& columns, std::size_t count, ChainStep* failed,
            PointDates dates) const;
  void RunSome(std::size_t leg, const Columns& columns, const Numbers& chosen, std::size_t count,
               ConversionOutcome* outcomes, PointDates dates, bool inverse) const;

  bool keepsHeights_, vertical_;
  bool everywhere_;  // areas do not count
  std::vector<std::unique_ptr<OperationLeg>> legs_;
};

struct Conversion::Parts {
  Parts(const std::string& from, const std::string& to, const ConversionWish& wish)
      : source(registry, from), target(registry, to) {
    const Search search(registry, source, target, wish);
    keepsHeights = !ChangesHeights(source, target);
    for (const ConversionEnd* end : {&source, &target})
      notes.insert(notes.end(), end->Notes().begin(), end->Notes().end());
    if (const std::string note = HeightNote(source, target); !note.empty()) notes.push_back(note);
    bool anyWished = wish.operation.empty();
    for (const Stage& stage : search.Plan()) {
      bool wished = false;
      const auto chosen = search.Choose(stage, wished);
      anyWished = anyWished || wished;
      stages.emplace_back(stage, chosen, wished || wish.one || wish.near);
      if (wished) continue;
      for (std::string& note : BetterOperations(stage.candidates, *chosen.front()))
        notes.push_back(std::move(note));
    }
    if (!anyWished) search.RefuseWished();
    TellOperations();
  }

  // Points are told apart by the operation between datums; those of heights are noted.
  void TellOperations() {
    for (std::size_t i = 0; i < stages.size() && main == kNone; ++i)
      if (!stages[i].IsVertical()) main = i;
    for (std::size_t i = 0; i < stages.size(); ++i)
      for (const auto& leg : stages[i].Legs())
        if (i == main)
          operations.push_back(leg->Title());
        else
          notes.push_back((stages[i].IsVertical() ? "heights by " : "then by ") + leg->Title());
    if (operations.empty()) operations.emplace_back("both systems are on one datum");
  }

  std::size_t Run(const StageRun::Columns& columns, std::size_t count, ConversionOutcome* outcomes,
                  PointDates dates, bool inverse) const;
  void RunBlock(const StageRun::Columns& columns, std::size_t count, ConversionOutcome* outcomes,
                PointDates dates, bool inverse) const;

  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  const EpsgRegistry registry;
  ConversionEnd source, target;
  std::vector<StageRun> stages;
  std::size_t main = kNone;  // of the stages
  bool keepsHeights = false;
  std::vector<std::string> operations, notes;
};

Conversion::Conversion(const std::string& source, const std::string& target,
                       const ConversionWish& wish)
    : parts_(std::make_unique<Parts>(source, target, wish)) {}

Conversion::~Conversion() = default;

const ConversionEnd& Conversion::Source() const { return parts_->source; }
const ConversionEnd& Conversion::Target() const { return parts_->target; }

void Conversion::SetUnits(const GridUnits& units) {
  for (ConversionEnd* end : {&parts_->source, &parts_->target})
    if (end->Kind() == EndKind::projected) end->SetUnits(units);
}

bool Conversion::KeepsHeights() const { return parts_->keepsHeights; }

bool Conversion::NeedsDates() const {
  return parts_->source.NeedsDates() || parts_->target.NeedsDates() ||
         std::any_of(parts_->stages.begin(), parts_->stages.end(),
                     [](const auto& stage) { return stage.NeedsDates(); });
}

const std::vector<std::string>& Conversion::Operations() const { return parts_->operations; }
const std::vector<std::string>& Conversion::Notes() const { return parts_->notes; }

std::vector<std::string> Conversion::Files() const {
  std::vector<std::string> files = parts_->source.Files();
  const auto add = [&](const std::vector<std::string>& more) {
    files.insert(files.end(), more.begin(), more.end());
  };
  add(parts_->target.Files());
  for (const StageRun& stage : parts_->stages)
    for (const auto& leg : stage.Legs()) add(leg->Files());
  return files;
}

std::size_t Conversion::ToTarget(double* a, double* b, double* c, std::size_t count,
                                 ConversionOutcome* outcomes, PointDates dates) const {
  return parts_->Run({a, b, c}, count, outcomes, dates, false);
}

std::size_t Conversion::ToSource(double* a, double* b, double* c, std::size_t count,
                                 ConversionOutcome* outcomes, PointDates dates) const {
  return parts_->Run({a, b, c}, count, outcomes, dates, true);
}

// ---- many points ----

std::size_t Conversion::Parts::Run(const StageRun::Columns& columns, std::size_t count,
                                   ConversionOutcome* outcomes, PointDates dates,
                                   bool inverse) const {
  constexpr std::size_t kBlock = StageRun::kBlock;
  std::size_t done = 0;
  std::array<ConversionOutcome, kBlock> own;
  for (std::size_t i = 0; i < count; i += kBlock) {
    const std::size_t size = std::min(kBlock, count - i);
    ConversionOutcome* block = outcomes ? outcomes + i : own.data();
    RunBlock({columns[0] + i, columns[1] + i, columns[2] + i}, size, block, dates.From(i), inverse);
    done += static_cast<std::size_t>(
        std::count_if(block, block + size, [](const auto& outcome) { return bool(outcome); }));
  }
  return done;
}

void Conversion::Parts::RunBlock(const StageRun::Columns& columns, std::size_t count,
                                 ConversionOutcome* outcomes, PointDates dates,
                                 bool inverse) const {
  const auto [a, b, c] = columns;
  const ConversionEnd &from = inverse ? target : source, &to = inverse ? source : target;
  std::array<ChainStep, StageRun::kBlock> failed;
  from.ToPositions(a, b, c, count, dates, failed.data());
  for (std::size_t i = 0; i < count; ++i) outcomes[i] = {failed[i], 0, false};
  std::array<ConversionOutcome, StageRun::kBlock>
      aside;  // of stages that points are not told apart by
  for (std::size_t k = 0; k < stages.size(); ++k) {
    const std::size_t stage = inverse ? stages.size() - 1 - k : k;
    ConversionOutcome* of = stage == main ? outcomes : aside.data();
    if (stage != main) std::copy_n(outcomes, count, of);
    stages[stage].Run(columns, count, of, dates, inverse);
    for (std::size_t i = 0; i < count; ++i) outcomes[i].failed = of[i].failed;
  }
  to.FromPositions(a, b, c, count, dates, failed.data());
  for (std::size_t i = 0; i < count; ++i) {
    if (outcomes[i]) outcomes[i].failed = failed[i];
    if (!outcomes[i]) a[i] = b[i] = c[i] = std::numeric_limits<double>::quiet_NaN();
  }
}

void StageRun::RunLeg(std::size_t leg, const Columns& columns, std::size_t count, ChainStep* failed,
                      PointDates dates, bool inverse) const {
  const auto [b, l, h] = columns;
  const OperationLeg& its = *legs_[leg];
  const bool keeps = keepsHeights_ && its.ChangesHeights();
  std::array<double, kBlock> heights;
  if (keeps) std::copy_n(h, count, heights.begin());
  if (!inverse)
    its.Forward(b, l, h, count, dates, failed);
  else if (keeps)
    Undo(its, columns, count, failed, dates);
  else
    its.Inverse(b, l, h, count, dates, failed);
  if (keeps) std::copy_n(heights.begin(), count, h);
}

// The way back of a height that was dropped: forward from about there it is found again.
void StageRun::Undo(const OperationLeg& leg, const Columns& columns, std::size_t count,
                    ChainStep* failed, PointDates dates) const {
  const auto [b, l, h] = columns;
  std::array<double, kBlock> latitudes, longitudes, heights;
  std::array<ChainStep, kBlock> ignored;
  std::copy_n(b, count, latitudes.begin());
  std::copy_n(l, count, longitudes.begin());
  std::copy_n(h, count, heights.begin());
  leg.Inverse(b, l, h, count, dates, failed);
  std::copy_n(heights.begin(), count, h);
  leg.Forward(b, l, h, count, dates, ignored.data());
  std::copy_n(latitudes.begin(), count, b);
  std::copy_n(longitudes.begin(), count, l);
  leg.Inverse(b, l, h, count, dates, failed);
}

// Points that are chosen by their numbers; those that fail stay as they were.
void StageRun::RunSome(std::size_t leg, const Columns& columns, const Numbers& chosen,
                       std::size_t count, ConversionOutcome* outcomes, PointDates dates,
                       bool inverse) const {
  std::array<double, kBlock> b, l, h, years;
  std::array<ChainStep, kBlock> failed;
  for (std::size_t k = 0; k < count; ++k) {
    const std::size_t i = chosen[k];
    b[k] = columns[0][i], l[k] = columns[1][i], h[k] = columns[2][i], years[k] = dates[i];
  }
  RunLeg(leg, {b.data(), l.data(), h.data()}, count, failed.data(), PointDates(years.data()),
         inverse);
  for (std::size_t k = 0; k < count; ++k) {
    const std::size_t i = chosen[k];
    outcomes[i].failed = failed[k];
    outcomes[i].operation = static_cast<std::uint16_t>(leg);
    if (failed[k] == ChainStep::none)
      columns[0][i] = b[k], columns[1][i] = l[k], columns[2][i] = h[k];
  }
}

void StageRun::Run(const Columns& columns, std::size_t count, ConversionOutcome* outcomes,
                   PointDates dates, bool inverse) const {
  Numbers waiting, chosen;
  std::size_t waits = 0;
  for (std::size_t i = 0; i < count; ++i)
    if (outcomes[i]) waiting[waits++] = static_cast<std::uint16_t>(i);
  if (everywhere_) return RunSome(0, columns, waiting, waits, outcomes, dates, inverse);
  for (std::size_t k = 0; k < waits; ++k) outcomes[waiting[k]].outside = true;
  // A point waits until an operation serves it.
  const auto serve = [&](std::size_t leg, auto takes) {
    std::size_t some = 0, left = 0;
    for (std::size_t k = 0; k < waits; ++k)
      if (takes(waiting[k])) chosen[some++] = waiting[k];
    RunSome(leg, columns, chosen, some, outcomes, dates, inverse);
    for (std::size_t k = 0, at = 0; k < waits; ++k) {
      const bool tried = at < some && chosen[at] == waiting[k];
      if (tried) ++at;
      if (!tried || !outcomes[waiting[k]]) waiting[left++] = waiting[k];
    }
    waits = left;
  };
  for (std::size_t leg = 0; leg < legs_.size() && waits > 0; ++leg) {
    const GeoBox& area = legs_[leg]->Area();
    serve(leg, [&](std::uint16_t i) {
      const bool inside = area.Contains(columns[0][i] * kDegPerRad,
                                        std::remainder(columns[1][i], kTwoPi) * kDegPerRad);
      if (inside) outcomes[i].outside = false;
      return inside;
    });
  }
  for (std::size_t leg = 0; leg < legs_.size() && waits > 0; ++leg)
    if (!legs_[leg]->HasGrid()) serve(leg, [&](std::uint16_t i) { return outcomes[i].outside; });
  const ChainStep refusal = vertical_ ? ChainStep::verticalShift : ChainStep::geographicShift;
  for (std::size_t k = 0; k < waits; ++k)
    if (ConversionOutcome& left = outcomes[waiting[k]]; left) left.failed = refusal;
}

std::string ListConversionOperations(const std::string& source, const std::string& target,
                                     const ConversionWish& wish) {
  const EpsgRegistry registry;
  const ConversionEnd from(registry, source), to(registry, target);
  const Search search(registry, from, to, wish);
  std::string text;
  for (const Stage& stage : search.Plan()) text += ListOperations(stage.candidates);
  if (text.empty()) text = fmt::format("{} and {} are on one datum\n", from.Title(), to.Title());
  return text;
}

}  // namespace geomath_files
