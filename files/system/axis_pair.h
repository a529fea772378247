#pragma once

namespace geomath_files {

/// The axes of a pair, for what has coordinates in columns with names: which of the two stands first
/// in a chain's pair, and the signs (1 or -1) that make a northing and an easting of the columns.
struct AxisPair {
  bool northFirst = true;  ///< northing or latitude stands first
  double northSign = 1;    ///< -1 where the column counts to the south
  double eastSign = 1;     ///< -1 where the column counts to the west
};

}  // namespace geomath_files
