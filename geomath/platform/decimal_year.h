#pragma once

#include <optional>

#include "geomath/export.h"

namespace zel_cs::geomath {

/// The date as a year and its elapsed fraction, at the beginning of the day: year + (day of the
/// year − 1)/(365, in leap years 366), Gregorian. Months and days count from 1; nothing when the
/// calendar has no such day.
GEOMATH_API std::optional<double> DecimalYear(int year, int month, int day) noexcept;

}  // namespace zel_cs::geomath
