#pragma once

#include <memory>
#include <span>
#include <vector>

#include "geomath/export.h"
#include "geomath/frame/frame_table.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// The way from one reference frame to another in published steps, at the date of the position:
/// Forward from the first frame to the last. Geocentric; positions stay at their date, also where a
/// frame is used at one epoch only.
class GEOMATH_API FrameChange : public CoordinateShift {
 public:
  /// By FrameSteps. Null when the frames are not connected, or without memory; the way from a frame
  /// to itself leaves the coordinates as they are.
  static std::unique_ptr<FrameChange> Make(ReferenceFrame from, ReferenceFrame to) noexcept;
  ~FrameChange() override;

  /// The steps.
  std::span<const FrameStep> Steps() const { return steps_; }

 private:
  explicit FrameChange(std::vector<FrameStep> steps);

  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void ForwardDatedBlock(double* const (&point)[3], const double* dates, std::size_t count,
                         ShiftStatus* status) const override;
  void InverseDatedBlock(double* const (&point)[3], const double* dates, std::size_t count,
                         ShiftStatus* status) const override;
  void RunStep(std::size_t step, bool forward, double* const (&point)[3], PointDates dates,
               std::size_t count, ShiftStatus* status) const;

  std::vector<FrameStep> steps_;
  std::vector<std::unique_ptr<const CoordinateShift>> shifts_;  // of the steps, in their own sense
};

}  // namespace zel_cs::geomath
