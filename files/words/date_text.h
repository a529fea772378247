#pragma once

#include <string_view>

#include "files/words/number_text.h"

namespace geomath_files {

/// From the beginning of a year to that of another one.
struct YearRange {
  int first, last;
};
/// In which positions have been observed, or will be.
inline constexpr YearRange kSurveyYears{1800, 2200};

/// A date as a decimal year (see DecimalYear), from one or from a day of the calendar:
///   2026.9   2026-11-23   2026/11/23   2026-5-3   2026-11-23T14:30:00Z   2026-11-23 14:30
/// The time of the day is a part of the day, by the universal time. What is outside of `years` is no
/// date: another number stands there.
ParsedNumber ParseDate(std::string_view text, YearRange years = kSurveyYears);

}  // namespace geomath_files
