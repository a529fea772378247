#pragma once

#include <memory>
#include <string>

#include "files/points/point_source.h"

namespace geomath_files {

/// The features of a layer, in a format of GDAL/OGR; an empty `layer` means the only one. Throws
/// UserError.
std::unique_ptr<PointSource> OpenFeatures(const std::string& path, const std::string& layer);

}  // namespace geomath_files
