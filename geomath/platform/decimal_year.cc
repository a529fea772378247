#include "geomath/platform/decimal_year.h"

namespace zel_cs::geomath {

std::optional<double> DecimalYear(int year, int month, int day) noexcept {
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  const int monthDays[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12 || day < 1 || day > monthDays[month - 1]) return std::nullopt;

  int elapsed = day - 1;
  for (int i = 0; i < month - 1; ++i) elapsed += monthDays[i];
  return year + elapsed / (leap ? 366.0 : 365.0);
}

}  // namespace zel_cs::geomath
