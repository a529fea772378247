#pragma once

#include <array>
#include <string>
#include <vector>

#include "tools/row_loop.h"

namespace geomath_files::program {

/// A position as it is typed: latitude, longitude (degrees, or gons) or northing, easting; and a
/// height in metres, which may be missing. Throws UserError, naming the part that is wrong.
std::array<double, 3> ReadPosition(const std::vector<std::string>& texts, CoordinateKind kind,
                                   bool gon = false);

/// Lets the job work on one position and prints its results. Returns the exit status.
int RunPosition(const std::vector<std::string>& texts, const PointOptions& options,
                const RowJob& job);

}  // namespace geomath_files::program
