#pragma once

#include <memory>
#include <string>

#include "files/points/point_sink.h"

namespace geomath_files {

/// A layer of point features in the format of a GDAL/OGR driver. Throws UserError.
std::unique_ptr<PointSink> CreateFeatures(const std::string& path, const char* driver,
                                          const PointSource& source, const ResultStyle& style);

}  // namespace geomath_files
