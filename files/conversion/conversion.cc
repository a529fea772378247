#include "files/conversion/conversion.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>

#include "files/conversion/operation_search.h"
#include "files/conversion/stage_run.h"
#include "files/epsg/epsg_registry.h"

using namespace zel_cs::geomath;

namespace geomath_files {

struct Conversion::Parts {
  // The registry is needed no longer than for that.
  Parts(const EpsgRegistry& registry, const std::string& from, const std::string& to,
        const ConversionWish& wish)
      : source(registry, from), target(registry, to) {
    const OperationSearch search(registry, source, target, wish);
    keepsHeights = !ChangesHeights(source, target);
    for (const ConversionEnd* end : {&source, &target})
      notes.insert(notes.end(), end->Notes().begin(), end->Notes().end());
    if (const std::string note = HeightNote(source, target); !note.empty()) notes.push_back(note);
    bool anyWished = wish.operation.empty();
    for (const ConversionStage& stage : search.Plan()) {
      bool wished = false;
      const auto chosen = search.Choose(stage, wished);
      anyWished = anyWished || wished;
      stages.emplace_back(registry, stage, chosen, wished || wish.one || wish.near);
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

  ConversionEnd source, target;
  std::vector<StageRun> stages;
  std::size_t main = kNone;  // of the stages
  bool keepsHeights = false;
  std::vector<std::string> operations, notes;
};

Conversion::Conversion(const std::string& source, const std::string& target,
                       const ConversionWish& wish)
    : parts_(std::make_unique<Parts>(EpsgRegistry(), source, target, wish)) {}

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

std::string ListConversionOperations(const std::string& source, const std::string& target,
                                     const ConversionWish& wish) {
  const EpsgRegistry registry;
  const ConversionEnd from(registry, source), to(registry, target);
  const OperationSearch search(registry, from, to, wish);
  std::string text;
  for (const ConversionStage& stage : search.Plan()) text += ListOperations(stage.candidates);
  if (text.empty()) text = fmt::format("{} and {} are on one datum\n", from.Title(), to.Title());
  return text;
}

}  // namespace geomath_files
