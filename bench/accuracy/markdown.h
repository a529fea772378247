#pragma once

#include <initializer_list>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

/// Metres to two significant digits in the unit that suits: from "< 1 nm", the rounding of a
/// coordinate, to "none", for what is no result.
std::string Length(long double metres);
/// The same for a difference between batch and one-point results, which may be none at all.
std::string BatchDeviation(long double metres);
/// The metres of a text that Length gave; none for another text.
std::optional<long double> ParseLength(const std::string& text);

/// A table row, and the line under a head of so many columns.
void WriteRow(std::ostream& out, const std::vector<std::string>& cells);
void WriteHead(std::ostream& out, const std::vector<std::string>& cells);
