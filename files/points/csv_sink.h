#pragma once

#include <memory>
#include <string>

#include "files/points/point_sink.h"

namespace geomath_files {

/// A CSV file, or CSV on standard output for "-". Rows of a CSV source keep their text, separator
/// and line ends. Throws UserError.
std::unique_ptr<PointSink> CreateCsv(const std::string& path, const PointSource& source,
                                     const ResultStyle& style);

}  // namespace geomath_files
