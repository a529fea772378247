#pragma once

#include <memory>
#include <string>

#include "files/points/point_source.h"

namespace geomath_tools {

/// The rows of a CSV file, or of standard input for "-". Throws UserError.
std::unique_ptr<PointSource> OpenCsv(const std::string& path);

}  // namespace geomath_tools
