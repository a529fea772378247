#pragma once

#include <string>
#include <string_view>

namespace geomath_tools {

/// A number read from text, or the reason why the text is none.
struct ParsedNumber {
  double value = 0;
  std::string problem;  ///< empty when `value` holds the number
  explicit operator bool() const { return problem.empty(); }
};

/// A finite decimal number; blanks around it do not matter.
ParsedNumber ParseNumber(std::string_view text);

enum class AngleKind { latitude, longitude };

/// An angle in degrees, from decimal degrees or from degrees, minutes and seconds:
///   52.504167   -0.1278   52 30 15.5 N   N 52 30.2583   52:30:15.5   W 0d7m40s   0°7'40"W
/// Signs are + and −, or the capital letters N, S for latitudes and E, W for longitudes, before or
/// after the figures. Only the last figure may have decimals; minutes and seconds are below 60.
/// Latitudes reach ±90°, longitudes ±360°.
ParsedNumber ParseAngle(std::string_view text, AngleKind kind);

/// Tests a number of degrees against the range of its kind; empty when it is inside.
std::string AngleRangeProblem(double degrees, AngleKind kind);

}  // namespace geomath_tools
