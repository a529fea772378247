#pragma once

#include <array>
#include <string>
#include <vector>

namespace geomath_files {

/// Which coordinates the points of a file have.
enum class CoordinateKind { geographic, grid, geocentric };

/// Names of columns that mean one thing, as FoldName makes them: those that the program itself
/// writes or asks for, and, when there is none of them, those that instruments and other programs
/// write.
struct UsualNames {
  std::vector<std::string> own, others;
};

/// Those of latitude, longitude, height; northing, easting, height; or X, Y, Z.
using AxisNames = std::array<UsualNames, 3>;
const AxisNames& UsualAxisNames(CoordinateKind kind);
/// Those of angles in gons, which have names of their own.
const AxisNames& UsualGonNames();

/// The columns that have one of the names, by their indices: those of its own, else of the others.
std::vector<std::size_t> FindUsual(const std::vector<std::string>& columns,
                                   const UsualNames& names);

}  // namespace geomath_files
