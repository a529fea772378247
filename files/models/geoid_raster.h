#pragma once

#include <string>

#include "files/models/raster_reader.h"

namespace geomath_files {

/// Reads the first band of a raster that OpenGridFile knows, nodes at the pixel centres. No-data
/// pixels and pixels that are not finite become holes; heights in another unit of length than the
/// metre are converted. Throws UserError.
GeoidRaster ReadGeoidRaster(const std::string& path);

}  // namespace geomath_files
