#pragma once

#include <memory>
#include <span>
#include <vector>

#include "geomath/export.h"
#include "geomath/frame/dated_shift.h"
#include "geomath/frame/frame_table.h"
#include "geomath/frame/time_dependent_similarity.h"

namespace zel_cs::geomath {

/// The way from one reference frame to another in published steps, at the date of the position:
/// Forward from the first frame to the last. Timeless when no step changes with the date.
/// Geocentric; positions stay at their date, also where a frame is used at one epoch only.
class GEOMATH_API FrameChange : public DatedShift {
 public:
  /// By FrameSteps. Null when the frames are not connected, or without memory; the way from a frame
  /// to itself leaves the coordinates as they are.
  static std::unique_ptr<FrameChange> Make(ReferenceFrame from, ReferenceFrame to) noexcept;
  ~FrameChange() override;

  /// The steps.
  std::span<const FrameStep> Steps() const { return steps_; }

 private:
  explicit FrameChange(std::vector<FrameStep> steps);

  void ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void DifferentiateAt(const double* const (&source)[3], const double* dates, std::size_t count,
                       double* const (&jacobian)[9], ShiftStatus* status) const override;

  std::vector<FrameStep> steps_;
  std::vector<TimeDependentSimilarity> similarities_;  // of the steps, from source to target
};

}  // namespace zel_cs::geomath
