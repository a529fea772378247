#include "files/words/date_text.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>

#include "files/words/name_match.h"
#include "geomath/platform/decimal_year.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr const char* kForms = "a decimal year (2026.9) or a day (2026-11-23) belongs there";

// The text from where it is read on.
class Figures {
 public:
  explicit Figures(std::string_view text) : rest_(text) {}

  bool AtEnd() const { return rest_.empty(); }
  // One of the marks; '\0' where none stands here.
  char Take(std::string_view marks) {
    if (rest_.empty() || marks.find(rest_.front()) == std::string_view::npos) return '\0';
    const char mark = rest_.front();
    rest_.remove_prefix(1);
    return mark;
  }
  // A number of so many figures.
  std::optional<int> Take(std::size_t figures) {
    if (rest_.size() < figures) return std::nullopt;
    int number = 0;
    const char* const end = rest_.data() + figures;
    if (std::from_chars(rest_.data(), end, number).ptr != end || number < 0) return std::nullopt;
    rest_.remove_prefix(figures);
    return number;
  }
  // A number of one or two figures.
  std::optional<int> TakeShort() {
    const bool two = rest_.size() > 1 && rest_[1] >= '0' && rest_[1] <= '9';
    return Take(std::size_t{two ? 2u : 1u});
  }
  // What may stand behind a mark: digits.
  void SkipDigits() {
    while (Take("0123456789")) {
    }
  }

 private:
  std::string_view rest_;
};

// Behind the day: "T14:30:00Z"; days from its beginning, nothing for what is none.
std::optional<double> TimeOfDay(Figures& figures) {
  if (figures.AtEnd()) return 0;
  if (!figures.Take("T ")) return std::nullopt;
  const auto pair = [&](double unit, int limit, double& sum) {
    const std::optional<int> number = figures.Take(2);
    if (!number || *number >= limit) return false;
    sum += *number * unit;
    return true;
  };
  constexpr double kHour = 1.0 / 24, kMinute = kHour / 60, kSecond = kMinute / 60;
  double time = 0, zone = 0;
  if (!pair(kHour, 24, time) || !figures.Take(":") || !pair(kMinute, 60, time)) return std::nullopt;
  if (figures.Take(":")) {
    if (!pair(kSecond, 61, time)) return std::nullopt;
    if (figures.Take(".")) figures.SkipDigits();
  }
  if (const char sign = figures.Take("+-")) {
    if (!pair(kHour, 24, zone)) return std::nullopt;
    figures.Take(":");
    if (!figures.AtEnd() && !pair(kMinute, 60, zone)) return std::nullopt;
    if (sign == '-') zone = -zone;
  } else {
    figures.Take("Z");
  }
  if (!figures.AtEnd()) return std::nullopt;
  return time - zone;
}

std::optional<double> DateOf(std::string_view text) {
  Figures figures(text);
  const std::optional<int> year = figures.Take(4);
  const char mark = figures.Take("-/");
  if (!year || !mark) return std::nullopt;
  const std::optional<int> month = figures.TakeShort();
  if (!month || figures.Take("-/") != mark) return std::nullopt;
  const std::optional<int> day = figures.TakeShort();
  const std::optional<double> begin = day ? DecimalYear(*year, *month, *day) : std::nullopt;
  const std::optional<double> time = TimeOfDay(figures);
  if (!begin || !time) return std::nullopt;
  const bool leap = DecimalYear(*year, 2, 29).has_value();
  return *begin + *time / (leap ? 366 : 365);
}

}  // namespace

ParsedNumber ParseDate(std::string_view text, YearRange years) {
  const std::string_view given = Trim(text);
  const ParsedNumber year = ParseNumber(given);
  const std::optional<double> date = year ? year.value : DateOf(given);
  if (!date) return {0, fmt::format("\"{}\" is no date: {}", Printable(given), kForms)};
  if (*date < years.first || *date >= years.last)
    return {0, fmt::format("\"{}\" is no date from {} to {}: {}", Printable(given), years.first,
                           years.last, kForms)};
  return {*date, {}};
}

}  // namespace geomath_files
