#include "geomath/platform/read_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <system_error>

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
