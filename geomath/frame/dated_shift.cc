#include "geomath/frame/dated_shift.h"

#include <algorithm>
#include <cmath>

namespace zel_cs::geomath {

DatedShift::~DatedShift() = default;

// Points that are refused for their dates are carried along at a date that is allowed.
void DatedShift::RunAt(BlockAt block, double* const (&point)[3], const double* dates,
                       std::size_t count, ShiftStatus* status) const {
  const auto allowed = [this](double date) { return date >= years_.first && date <= years_.last; };
  std::size_t refused = 0;
  for (std::size_t i = 0; i < count; ++i) refused += !allowed(dates[i]);
  if (refused == 0) return (this->*block)(point, dates, count, status);

  double years[kMaxPoints] = {};
  for (std::size_t i = 0; i < count; ++i)
    years[i] = allowed(dates[i]) ? dates[i] : std::clamp(0.0, years_.first, years_.last);
  (this->*block)(point, years, count, status);
  for (std::size_t i = 0; i < count; ++i)
    if (!allowed(dates[i]))
      status[i] = std::isnan(dates[i]) ? ShiftStatus::noDate : ShiftStatus::otherDate;
}

// Called where the kind is timeless: any date will do.
void DatedShift::ForwardBlock(double* const (&point)[3], std::size_t count,
                              ShiftStatus* status) const {
  constexpr double kAnyDates[kMaxPoints] = {};
  ForwardAt(point, kAnyDates, count, status);
}

void DatedShift::InverseBlock(double* const (&point)[3], std::size_t count,
                              ShiftStatus* status) const {
  constexpr double kAnyDates[kMaxPoints] = {};
  InverseAt(point, kAnyDates, count, status);
}

void DatedShift::ForwardDatedBlock(double* const (&point)[3], const double* dates,
                                   std::size_t count, ShiftStatus* status) const {
  RunAt(&DatedShift::ForwardAt, point, dates, count, status);
}

void DatedShift::InverseDatedBlock(double* const (&point)[3], const double* dates,
                                   std::size_t count, ShiftStatus* status) const {
  RunAt(&DatedShift::InverseAt, point, dates, count, status);
}

}  // namespace zel_cs::geomath
