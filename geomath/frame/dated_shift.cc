#include "geomath/frame/dated_shift.h"

#include <algorithm>
#include <cmath>

#include "geomath/frame/one_date.h"

namespace zel_cs::geomath {

DatedShift::~DatedShift() = default;

// `run`, a callable on dates, with points that are refused for theirs carried along at one that is
// allowed.
template <class Run>
void DatedShift::RunAt(const double* dates, std::size_t count, ShiftStatus* status,
                       const Run& run) const {
  const auto allowed = [this](double date) { return date >= years_.first && date <= years_.last; };
  if (IsOneDate(dates, count) && allowed(dates[0])) return run(dates);
  std::size_t refused = 0;
  for (std::size_t i = 0; i < count; ++i) refused += !allowed(dates[i]);
  if (refused == 0) return run(dates);

  double years[kMaxPoints] = {};
  for (std::size_t i = 0; i < count; ++i)
    years[i] = allowed(dates[i]) ? dates[i] : std::clamp(0.0, years_.first, years_.last);
  run(years);
  for (std::size_t i = 0; i < count; ++i)
    if (!allowed(dates[i]))
      status[i] = std::isnan(dates[i]) ? ShiftStatus::noDate : ShiftStatus::otherDate;
}

// Called where the kind is timeless: any date will do.
void DatedShift::ForwardBlock(double* const (&point)[3], std::size_t count,
                              ShiftStatus* status) const {
  static constexpr double kAnyDates[kMaxPoints] = {};
  ForwardAt(point, kAnyDates, count, status);
}

void DatedShift::InverseBlock(double* const (&point)[3], std::size_t count,
                              ShiftStatus* status) const {
  static constexpr double kAnyDates[kMaxPoints] = {};
  InverseAt(point, kAnyDates, count, status);
}

void DatedShift::ForwardDatedBlock(double* const (&point)[3], const double* dates,
                                   std::size_t count, ShiftStatus* status) const {
  RunAt(dates, count, status, [&](const double* years) { ForwardAt(point, years, count, status); });
}

void DatedShift::InverseDatedBlock(double* const (&point)[3], const double* dates,
                                   std::size_t count, ShiftStatus* status) const {
  RunAt(dates, count, status, [&](const double* years) { InverseAt(point, years, count, status); });
}

void DatedShift::DifferentiateBlock(const double* const (&source)[3], const double* dates,
                                    std::size_t count, double* const (&jacobian)[9],
                                    ShiftStatus* status) const {
  static constexpr double kAnyDates[kMaxPoints] = {};
  if (Kind() == ShiftKind::timeless)
    return DifferentiateAt(source, kAnyDates, count, jacobian, status);
  RunAt(dates, count, status,
        [&](const double* years) { DifferentiateAt(source, years, count, jacobian, status); });
}

void DatedShift::DifferentiateAt(const double* const (&source)[3], const double* dates,
                                 std::size_t count, double* const (&jacobian)[9],
                                 ShiftStatus* status) const {
  CoordinateShift::DifferentiateBlock(source, dates, count, jacobian, status);
}

}  // namespace zel_cs::geomath
