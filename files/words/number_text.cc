#include "files/words/number_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <optional>

#include "files/words/name_match.h"

namespace geomath_files {
namespace {

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                   1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};

ParsedNumber Problem(std::string text) { return {0, std::move(text)}; }

// The marks of degrees, minutes and seconds; those of several bytes are UTF-8.
constexpr std::string_view kUnitMarks[3][5] = {
    {"\xC2\xB0", "\xC2\xBA", "d", ":"},               // degree sign, masculine ordinal
    {"'", "\xE2\x80\xB2", "\xE2\x80\x99", "m", ":"},  // prime, right quotation mark
    {"\"", "\xE2\x80\xB3", "\xE2\x80\x9D", "''", "s"},
};

bool TakeMark(std::string_view& text, int unit) {
  for (const std::string_view mark : kUnitMarks[unit]) {
    if (!mark.empty() && text.starts_with(mark)) {
      text.remove_prefix(mark.size());
      return true;
    }
  }
  return false;
}

struct Hemisphere {
  char letter;
  AngleKind kind;
  double sign;
};
constexpr Hemisphere kHemispheres[] = {
    {'N', AngleKind::latitude, 1},
    {'S', AngleKind::latitude, -1},
    {'E', AngleKind::longitude, 1},
    {'W', AngleKind::longitude, -1},
};

// Takes a hemisphere letter from either end. Capitals only: a small s is the mark of seconds.
std::optional<Hemisphere> TakeHemisphere(std::string_view& text) {
  if (text.empty()) return std::nullopt;
  for (const Hemisphere& hemisphere : kHemispheres) {
    if (text.front() == hemisphere.letter) {
      text = Trim(text.substr(1));
      return hemisphere;
    }
    if (text.back() == hemisphere.letter) {
      text = Trim(text.substr(0, text.size() - 1));
      return hemisphere;
    }
  }
  return std::nullopt;
}

// One to three figures before a comma, not a 0 at first, and three behind it.
bool LooksGrouped(std::string_view text, std::size_t comma) {
  const std::string_view number = Trim(text);
  const std::size_t at = comma - static_cast<std::size_t>(number.data() - text.data());
  const std::size_t sign = number.front() == '-' || number.front() == '+';
  return number.size() - at - 1 == 3 && at - sign >= 1 && at - sign <= 3 && number[sign] != '0';
}

struct PlainNumber {
  double value;
  bool hasPoint;
};

// A number as most are: a sign, figures, a point among them, blanks before. Up to 2^53 and 10^22 both
// figures and the power of ten are exact, so that the quotient is correctly rounded (Clinger 1990,
// "How to read floating point numbers accurately", section 3).
std::optional<PlainNumber> TakePlainNumber(std::string_view text) {
  const char *at = text.data(), *const end = at + text.size();
  while (at != end && *at == ' ') ++at;
  const bool negative = at != end && *at == '-';
  if (negative) ++at;
  constexpr std::ptrdiff_t kMostFigures = 18;  // of 64 bits
  if (end - at > kMostFigures + 1) return std::nullopt;
  std::uint64_t figures = 0;
  const auto take = [&] {
    const char* const from = at;
    for (; at != end && static_cast<unsigned char>(*at - '0') < 10; ++at)
      figures = figures * 10 + static_cast<std::uint64_t>(*at - '0');
    return at - from;
  };
  const std::ptrdiff_t whole = take();
  const bool hasPoint = at != end && *at == '.';
  if (hasPoint) ++at;
  const std::ptrdiff_t decimals = hasPoint ? take() : 0;
  constexpr std::uint64_t kMostExact = std::uint64_t{1} << 53;
  if (at != end || whole + decimals == 0 || figures > kMostExact) return std::nullopt;
  const double value = static_cast<double>(figures) / kPowersOfTen[decimals];
  return PlainNumber{negative ? -value : value, hasPoint};
}

// The leading unsigned decimal number of the text.
std::optional<double> TakeFigure(std::string_view& text, bool& hasDecimals) {
  const std::size_t length = std::min(text.find_first_not_of("0123456789."), text.size());
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + length, value);
  if (error != std::errc() || end != text.data() + length) return std::nullopt;
  hasDecimals = text.substr(0, length).find('.') != std::string_view::npos;
  text.remove_prefix(length);
  return value;
}

}  // namespace

std::string_view Trim(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

ParsedNumber ParseNumber(std::string_view text) {
  if (const auto plain = TakePlainNumber(text)) return {plain->value, {}};
  const std::string_view given = Trim(text);
  if (given.empty()) return Problem("is empty");
  std::string_view digits = given;
  if (digits.front() == '+' && digits.size() > 1 && digits[1] != '-') digits.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error == std::errc::result_out_of_range || (error == std::errc() && !std::isfinite(value)))
    return Problem(fmt::format("\"{}\" is not a finite number", Printable(given)));
  if (error != std::errc() || end != digits.data() + digits.size()) {
    const bool comma = given.find(',') != std::string_view::npos;
    return Problem(fmt::format("\"{}\" is not a number{}", Printable(given),
                               comma ? " (write the decimal point as \".\")" : ""));
  }
  return {value, {}};
}

std::string AngleRangeProblem(double degrees, AngleKind kind) {
  const double limit = LargestAngle(kind);
  if (std::abs(degrees) <= limit) return {};
  return fmt::format("{} degrees is outside -{} to {}", degrees, limit, limit);
}

ParsedNumber ParseAngle(std::string_view text, AngleKind kind) {
  const std::string_view given = Trim(text);
  if (given.empty()) return Problem("is empty");
  if (ParsedNumber plain = ParseNumber(given)) {
    if (std::string problem = AngleRangeProblem(plain.value, kind); !problem.empty())
      return Problem(std::move(problem));
    return plain;
  }
  const auto noAngle = [&](std::string_view why) {
    return Problem(fmt::format("\"{}\" {}", Printable(given), why));
  };

  std::string_view rest = given;
  double sign = 1;
  const bool hasSign = rest.front() == '-' || rest.front() == '+';
  if (hasSign) {
    sign = rest.front() == '-' ? -1 : 1;
    rest = Trim(rest.substr(1));
  }
  if (const auto hemisphere = TakeHemisphere(rest)) {
    if (hemisphere->kind != kind)
      return noAngle(kind == AngleKind::latitude    ? "is no latitude (N or S belongs to it)"
                     : kind == AngleKind::longitude ? "is no longitude (E or W belongs to it)"
                                                    : "is no bearing (it has no letter)");
    if (hasSign) return noAngle("has a sign and a hemisphere letter");
    sign = hemisphere->sign;
  }

  double degrees = 0, unit = 1;
  bool lastHadDecimals = false;
  for (int part = 0; part == 0 || !rest.empty(); ++part, unit *= 60) {
    if (part > 2) return noAngle("is not an angle (more than degrees, minutes, seconds)");
    if (lastHadDecimals) return noAngle("is not an angle (decimals before the last figure)");
    const auto figure = TakeFigure(rest, lastHadDecimals);
    if (!figure)
      return noAngle("is not an angle (write decimal degrees or degrees minutes seconds)");
    if (part > 0 && *figure >= 60) return noAngle("has minutes or seconds of 60 or more");
    degrees += *figure / unit;
    rest = Trim(rest);
    TakeMark(rest, part);
    rest = Trim(rest);
  }
  degrees *= sign;
  if (std::string problem = AngleRangeProblem(degrees, kind); !problem.empty())
    return Problem(std::move(problem));
  return {degrees, {}};
}

// ---- numbers of one file ----

template <class Parse>
ParsedNumber NumberReader::Read(std::string_view text, bool mayBeThousands, Parse parse) {
  const std::size_t comma = text.find(',');
  const bool point = text.find('.') != std::string_view::npos;
  if (comma == std::string_view::npos) {
    if (point && mark_ == ',')
      return Problem(fmt::format("\"{}\" has a decimal point where others have a decimal comma",
                                 Printable(Trim(text))));
    const ParsedNumber number = parse(text);
    if (point && number) mark_ = '.';
    return number;
  }
  if (mark_ == '.' || point) return parse(text);  // which refuses commas
  std::string written(text);
  written[comma] = '.';
  const ParsedNumber number = parse(written);
  if (!number) return written.find(',') == std::string::npos ? number : parse(text);
  if (mark_ == '\0' && mayBeThousands && LooksGrouped(text, comma))
    return Problem(
        fmt::format("\"{}\" may have a decimal comma or one of thousands; "
                    "--decimal-comma says that it is decimal",
                    Printable(Trim(text))));
  mark_ = ',';
  return number;
}

// What needs none of the care of Read.
std::optional<double> NumberReader::ReadPlain(std::string_view text, double limit) {
  const auto plain = TakePlainNumber(text);
  if (!plain || (plain->hasPoint && mark_ == ',') || std::abs(plain->value) > limit)
    return std::nullopt;
  if (plain->hasPoint) mark_ = '.';
  return plain->value;
}

ParsedNumber NumberReader::Number(std::string_view text) {
  if (const auto plain = ReadPlain(text, HUGE_VAL)) return {*plain, {}};
  return Read(text, true, [](std::string_view t) { return ParseNumber(t); });
}

ParsedNumber NumberReader::Angle(std::string_view text, AngleKind kind) {
  if (const auto plain = ReadPlain(text, LargestAngle(kind))) return {*plain, {}};
  return Read(text, false, [kind](std::string_view t) { return ParseAngle(t, kind); });
}

void AppendDecimals(std::string& text, double value, int decimals) {
  // Up to 2^42 units of the last decimal their number is off by 2^-12 at most; where it is nearer than
  // that to a half, all figures of the value decide.
  constexpr double kMostUnits = 0x1p42, kUnsure = 0x1p-11;
  const bool few = decimals >= 0 && decimals < std::ssize(kPowersOfTen);
  const double units = few ? std::abs(value) * kPowersOfTen[decimals] : HUGE_VAL;
  auto left = units < kMostUnits ? static_cast<std::uint64_t>(units) : 0;
  const double fraction = units - static_cast<double>(left);
  if (!(units < kMostUnits) || std::abs(fraction - 0.5) <= kUnsure) {
    const std::string figures = fmt::format("{:.{}f}", value, decimals);
    const bool zero = figures.find_first_not_of("-0.") == std::string::npos;
    text.append(figures, zero && figures.front() == '-' ? 1 : 0);
    return;
  }
  if (fraction > 0.5) ++left;
  const bool negative = std::signbit(value) && left > 0;
  char room[40];
  char *const end = std::end(room), *at = end;
  for (int written = 0; written <= decimals || left > 0; ++written) {
    if (written == decimals && decimals > 0) *--at = '.';
    *--at = static_cast<char>('0' + left % 10);
    left /= 10;
  }
  if (negative) *--at = '-';
  text.append(at, end);
}

std::string SexagesimalText(double degrees, AngleKind kind, int decimals) {
  const char* letter = kind == AngleKind::latitude    ? (degrees < 0 ? " S" : " N")
                       : kind == AngleKind::longitude ? (degrees < 0 ? " W" : " E")
                                                      : "";
  // Whole units of the last decimal, so that nothing is left to carry over.
  const double units = std::pow(10, decimals);
  const double seconds = std::round(std::abs(degrees) * 3600 * units) / units;
  const double minutes = std::floor(seconds / 60);
  const double whole = std::floor(minutes / 60);
  const double rest = std::max(0.0, seconds - minutes * 60);
  const int width = decimals > 0 ? decimals + 3 : 2;
  const char* sign = kind == AngleKind::turn && degrees < 0 && seconds > 0 ? "-" : "";
  return fmt::format("{}{:.0f} {:02.0f} {:0{}.{}f}{}", sign, whole, minutes - whole * 60, rest,
                     width, decimals, letter);
}

}  // namespace geomath_files
