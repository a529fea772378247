#pragma once

#include <string>
#include <vector>

#include "files/site/site_solution.h"

namespace geomath_tools {

/// Reads control points: columns lat, lon, h, local_n, local_e, local_h, use and name. `use` holds a
/// code from 0 to 4 or one of none, vertical, horizontal, both, rotation; without the column every
/// point is used for what it has. An empty coordinate is one that the point does not have. Throws
/// UserError for everything that is wrong.
std::vector<ControlPoint> ReadControl(const std::string& path, const std::string& layer);

}  // namespace geomath_tools
