#pragma once

#include <memory>
#include <string>
#include <vector>

#include "files/points/point_source.h"

namespace geomath_files {

/// The rows of a CSV file, or of standard input for "-". `names` are those of the columns of a file
/// without header. A separator that ends the header or a row is left out. Throws UserError.
std::unique_ptr<PointSource> OpenCsv(const std::string& path,
                                     const std::vector<std::string>& names);

}  // namespace geomath_files
