#pragma once

#include <string>
#include <vector>

#include "files/site/site_solution.h"

namespace geomath_files {

/// Where control points are, and how they are written.
struct ControlSource {
  std::string path;                       ///< "-" for CSV from standard input
  std::string layer = {};                 ///< empty for the only one
  bool decimalComma = false;              ///< numbers have a decimal comma; else that is recognised
  std::vector<std::string> columns = {};  ///< of a CSV file without header; empty with one
  GridUnits units = {};                   ///< of the local coordinates, which become metres
};

/// The control points of a file.
struct ControlTable {
  std::vector<ControlPoint> points;  ///< in the order of the file
  std::string note;  ///< that a decimal comma was recognised; empty when there is nothing to say
};

/// Reads control points: columns lat, lon, h, local_n, local_e, local_h, use and name, or others
/// that mean one of these and no other (`Latitude`, `Rechtswert`). `use` holds a code from 0 to 4 or
/// one of none, vertical, horizontal, both, rotation; without the column every point is used for
/// what it has. An empty coordinate is one that the point does not have. Accuracies may stand in the
/// columns kAccuracyColumns. Throws UserError for everything that is wrong.
ControlTable ReadControl(const ControlSource& from);

}  // namespace geomath_files
