#include "geomath/frame/frame_change.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "geomath/shift/small_angle_similarity.h"

namespace zel_cs::geomath {
namespace {

ShiftKind KindOf(const std::vector<FrameStep>& steps) {
  const bool timeless = std::all_of(steps.begin(), steps.end(), [](const FrameStep& step) {
    return step.transformation->IsTimeless();
  });
  return timeless ? ShiftKind::timeless : ShiftKind::frameChange;
}

std::unique_ptr<const CoordinateShift> ShiftOf(const FrameTransformation& transformation) {
  const TimeDependentParameters p = transformation.Parameters();
  if (transformation.IsTimeless())
    return std::make_unique<SmallAngleSimilarity>(p.shift, p.rotation, p.scale, p.sense);
  return std::make_unique<TimeDependentSimilarity>(p);
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
    : CoordinateShift(ShiftSpace::geocentric, KindOf(steps)), steps_(std::move(steps)) {
  for (const FrameStep& step : steps_) shifts_.push_back(ShiftOf(*step.transformation));
}

FrameChange::~FrameChange() = default;

// A point that a step refuses is NaN in the next, which must not hide why.
void FrameChange::RunStep(std::size_t step, bool forward, double* const (&point)[3],
                          PointDates dates, std::size_t count, ShiftStatus* status) const {
  const CoordinateShift& shift = *shifts_[step];
  ShiftStatus became[kMaxPoints];
  if (forward != steps_[step].inverse)
    shift.ForwardDatedBatch(dates, point[0], point[1], point[2], count, 1, became);
  else
    shift.InverseDatedBatch(dates, point[0], point[1], point[2], count, 1, became);
  for (std::size_t i = 0; i < count; ++i)
    if (HasResult(status[i])) status[i] = became[i];
}

void FrameChange::ForwardDatedBlock(double* const (&point)[3], const double* dates,
                                    std::size_t count, ShiftStatus* status) const {
  for (std::size_t step = 0; step < steps_.size(); ++step)
    RunStep(step, true, point, PointDates(dates), count, status);
}

void FrameChange::InverseDatedBlock(double* const (&point)[3], const double* dates,
                                    std::size_t count, ShiftStatus* status) const {
  for (std::size_t step = steps_.size(); step-- > 0;)
    RunStep(step, false, point, PointDates(dates), count, status);
}

void FrameChange::ForwardBlock(double* const (&point)[3], std::size_t count,
                               ShiftStatus* status) const {
  for (std::size_t step = 0; step < steps_.size(); ++step)
    RunStep(step, true, point, PointDates(), count, status);
}

void FrameChange::InverseBlock(double* const (&point)[3], std::size_t count,
                               ShiftStatus* status) const {
  for (std::size_t step = steps_.size(); step-- > 0;)
    RunStep(step, false, point, PointDates(), count, status);
}

}  // namespace zel_cs::geomath
