#include "geomath/platform/read_number.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <system_error>
#include <version>

namespace zel_cs::geomath {
namespace {

constexpr std::size_t kLongest = 100;  // characters of a figure with a D

/// Without the plus sign, which std::from_chars does not take.
std::string_view WithoutPlus(std::string_view text) {
  const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  return plus ? text.substr(1) : text;
}

template <class Number>
std::optional<Number> ReadWhole(std::string_view text) noexcept {
  Number value{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

#if !defined(__cpp_lib_to_chars)  // as in libc++: std::from_chars takes integers only

std::size_t DigitsOf(std::string_view text) {
  return std::min(text.find_first_not_of("0123456789"), text.size());
}

/// Whether a text is what std::from_chars takes as a finite number.
bool IsFigure(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  std::size_t digits = DigitsOf(text);
  text.remove_prefix(digits);
  if (text.starts_with('.')) {
    const std::size_t decimals = DigitsOf(text.substr(1));
    text.remove_prefix(1 + decimals);
    digits += decimals;
  }
  if (digits == 0 || text.empty()) return digits != 0;
  if (text[0] != 'e' && text[0] != 'E') return false;
  text.remove_prefix(1);
  if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
  return !text.empty() && DigitsOf(text) == text.size();
}

/// By std::strtod, with the decimal point of the program's locale.
template <>
std::optional<double> ReadWhole<double>(std::string_view text) noexcept {
  constexpr std::size_t kRoom = 1000;
  if (text.size() >= kRoom || !IsFigure(text)) return std::nullopt;
  char figure[kRoom];
  std::ranges::copy(text, figure);
  figure[text.size()] = '\0';
  std::replace(figure, figure + text.size(), '.', *std::localeconv()->decimal_point);
  return std::strtod(figure, nullptr);
}

#endif

}  // namespace

std::optional<double> ReadNumber(std::string_view text) noexcept {
  text = WithoutPlus(text);
  char figure[kLongest];
  const std::size_t d = text.find_first_of("dD");
  if (d != std::string_view::npos) {
    if (text.size() > kLongest) return std::nullopt;
    std::ranges::copy(text, figure);
    figure[d] = 'e';
    text = {figure, text.size()};
  }
  const auto value = ReadWhole<double>(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<int> ReadInteger(std::string_view text) noexcept {
  return ReadWhole<int>(WithoutPlus(text));
}

}  // namespace zel_cs::geomath
