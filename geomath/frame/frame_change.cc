#include "geomath/frame/frame_change.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace zel_cs::geomath {
namespace {

ShiftKind KindOf(const std::vector<FrameStep>& steps) {
  const bool timeless = std::all_of(steps.begin(), steps.end(), [](const FrameStep& step) {
    return step.transformation->IsTimeless();
  });
  return timeless ? ShiftKind::timeless : ShiftKind::frameChange;
}

}  // namespace

std::unique_ptr<FrameChange> FrameChange::Make(ReferenceFrame from, ReferenceFrame to) noexcept
    try {
  std::vector<FrameStep> steps = FrameSteps(from, to);
  if (steps.empty() && from != to) return nullptr;
  return std::unique_ptr<FrameChange>(new FrameChange(std::move(steps)));
} catch (const std::exception&) {  // no memory
  return nullptr;
}

FrameChange::FrameChange(std::vector<FrameStep> steps)
    : DatedShift(ShiftSpace::geocentric, KindOf(steps)), steps_(std::move(steps)) {
  for (const FrameStep& step : steps_)
    similarities_.emplace_back(step.transformation->Parameters());
}

FrameChange::~FrameChange() = default;

void FrameChange::ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                            ShiftStatus* status) const {
  for (std::size_t step = 0; step < steps_.size(); ++step) {
    const TimeDependentSimilarity& similarity = similarities_[step];
    if (steps_[step].inverse)
      similarity.InverseAt(point, dates, count, status);
    else
      similarity.ForwardAt(point, dates, count, status);
  }
}

void FrameChange::InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                            ShiftStatus* status) const {
  for (std::size_t step = steps_.size(); step-- > 0;) {
    const TimeDependentSimilarity& similarity = similarities_[step];
    if (steps_[step].inverse)
      similarity.ForwardAt(point, dates, count, status);
    else
      similarity.InverseAt(point, dates, count, status);
  }
}

void FrameChange::DifferentiateAt(const double* const (&)[3], const double* dates,
                                  std::size_t count, double* const (&jacobian)[9],
                                  ShiftStatus*) const {
  for (std::size_t step = 0; step < steps_.size(); ++step)
    similarities_[step].Turn(steps_[step].inverse, jacobian, dates, count);
}

}  // namespace zel_cs::geomath
