#include "files/conversion/stage_run.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files {

StageRun::StageRun(const EpsgRegistry& registry, const ConversionStage& stage,
                   const std::vector<const CandidateOperation*>& chosen, bool everywhere)
    : keepsHeights_(stage.keepsHeights), vertical_(stage.vertical), everywhere_(everywhere) {
  for (const CandidateOperation* each : chosen)
    legs_.push_back(std::make_unique<OperationLeg>(registry, *each));
}

bool StageRun::NeedsDates() const {
  return std::any_of(legs_.begin(), legs_.end(), [](const auto& leg) { return leg->NeedsDates(); });
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
    b[k] = columns[0][i];
    l[k] = columns[1][i];
    h[k] = columns[2][i];
    years[k] = dates[i];
  }
  RunLeg(leg, {b.data(), l.data(), h.data()}, count, failed.data(), PointDates(years.data()),
         inverse);
  for (std::size_t k = 0; k < count; ++k) {
    const std::size_t i = chosen[k];
    outcomes[i].failed = failed[k];
    outcomes[i].operation = static_cast<std::uint16_t>(leg);
    if (failed[k] != ChainStep::none) continue;
    columns[0][i] = b[k];
    columns[1][i] = l[k];
    columns[2][i] = h[k];
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

}  // namespace geomath_files
