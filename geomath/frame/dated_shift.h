#pragma once

#include <limits>

#include "geomath/export.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// Years, both included.
struct YearRange {
  double first = std::numeric_limits<double>::lowest();  ///< decimal year
  double last = std::numeric_limits<double>::max();      ///< decimal year
};

/// A shift that needs the date of each position: a change of the reference frame, or a motion in one.
/// A position without a date is refused as ShiftStatus::noDate, one at a date outside of the years
/// for which the shift is defined as ShiftStatus::otherDate. A kind that is timeless says that this one
/// does not change with the date, and needs none.
class GEOMATH_API DatedShift : public CoordinateShift {
 public:
  ~DatedShift() override;

  /// The years for which the shift is defined.
  const YearRange& Years() const { return years_; }

 protected:
  /// Of a space and kind, for the years in which it is defined.
  DatedShift(ShiftSpace space, ShiftKind kind, const YearRange& years = {})
      : CoordinateShift(space, kind), years_(years) {}

  /// As DifferentiateBlock, at dates within Years(). The base takes differences.
  virtual void DifferentiateAt(const double* const (&source)[3], const double* dates,
                               std::size_t count, double* const (&jacobian)[9],
                               ShiftStatus* status) const;

 private:
  /// As ForwardBlock and InverseBlock, at dates within Years().
  virtual void ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                         ShiftStatus* status) const = 0;
  virtual void InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                         ShiftStatus* status) const = 0;

  void ForwardBlock(double* const (&point)[3], std::size_t count, ShiftStatus* status) const final;
  void InverseBlock(double* const (&point)[3], std::size_t count, ShiftStatus* status) const final;
  void ForwardDatedBlock(double* const (&point)[3], const double* dates, std::size_t count,
                         ShiftStatus* status) const final;
  void InverseDatedBlock(double* const (&point)[3], const double* dates, std::size_t count,
                         ShiftStatus* status) const final;

  void DifferentiateBlock(const double* const (&source)[3], const double* dates, std::size_t count,
                          double* const (&jacobian)[9], ShiftStatus* status) const final;

  template <class Run>
  void RunAt(const double* dates, std::size_t count, ShiftStatus* status, const Run& run) const;

  YearRange years_;
};

}  // namespace zel_cs::geomath
