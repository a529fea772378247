#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace geomath_files {

/// A number read from text, or the reason why the text is none.
struct ParsedNumber {
  double value = 0;
  std::string problem;  ///< empty when `value` holds the number
  explicit operator bool() const { return problem.empty(); }
};

/// The text without the blanks around it.
std::string_view Trim(std::string_view text);

/// A finite decimal number; blanks around it do not matter.
ParsedNumber ParseNumber(std::string_view text);

/// Appends a number with so many decimals, correctly rounded; a zero has no sign.
void AppendDecimals(std::string& text, double value, int decimals);

enum class AngleKind {
  latitude,
  longitude,
  turn  ///< a bearing, or what is turned between two: no hemisphere letter
};

/// How far an angle of its kind reaches from 0 either way, degrees.
constexpr double LargestAngle(AngleKind kind) { return kind == AngleKind::latitude ? 90 : 360; }

/// An angle in degrees, from decimal degrees or from degrees, minutes and seconds:
///   52.504167   -0.1278   52 30 15.5 N   N 52 30.2583   52:30:15.5   W 0d7m40s   0°7'40"W
/// Signs are + and −, or the capital letters N, S for latitudes and E, W for longitudes, before or
/// after the figures; turns have signs alone. Only the last figure may have decimals; minutes and
/// seconds are below 60. They reach as far as LargestAngle says.
ParsedNumber ParseAngle(std::string_view text, AngleKind kind);

/// Reads the numbers of one file, which all have a decimal point or all a decimal comma: the first
/// number that shows one settles it. A text such as "12,345", which may be thousands, settles
/// nothing and is refused until another number has.
class NumberReader {
 public:
  /// With a mark, '.' or ',', it is settled from the start.
  explicit NumberReader(char mark = '\0') : mark_(mark) {}

  /// A finite number, as ParseNumber reads it.
  ParsedNumber Number(std::string_view text);
  /// An angle, as ParseAngle reads it; its comma cannot be one of thousands.
  ParsedNumber Angle(std::string_view text, AngleKind kind);
  /// '.' or ','; 0 until a number has settled it.
  char Mark() const { return mark_; }

 private:
  std::optional<double> ReadPlain(std::string_view text, double limit);
  template <class Parse>
  ParsedNumber Read(std::string_view text, bool mayBeThousands, Parse parse);

  char mark_;
};

/// An angle as text, the inverse of ParseAngle: "52 39 28.5519 N", "-0 00 20.6668". Seconds are rounded to
/// `decimals`, 60 of them carried over.
std::string SexagesimalText(double degrees, AngleKind kind, int decimals);

/// Tests a number of degrees against the range of its kind; empty when it is inside.
std::string AngleRangeProblem(double degrees, AngleKind kind);

}  // namespace geomath_files
