#pragma once

#include <string_view>

#include "files/words/number_text.h"

namespace geomath_files {

/// The years that ParseDate takes.
inline constexpr int kFirstYear = 1800, kLastYear = 2200;

/// A date as a decimal year (see DecimalYear), from one or from a day of the calendar:
///   2026.9   2026-11-23   2026/11/23   2026-11-23T14:30:00Z   2026-11-23 14:30
/// The time of the day is a part of the day, by the universal time.
ParsedNumber ParseDate(std::string_view text);

}  // namespace geomath_files
