#pragma once

#include <memory>
#include <string>

#include "files/system/system_file.h"

namespace geomath_files {

/// The system that a name stands for: a code of the EPSG registry ("EPSG:27700"), with the
/// transformation to WGS 84 that is best over its area, or the path of a system file ("-" for standard
/// input). Reads rasters with GDAL (see UseGdal). Throws UserError.
std::unique_ptr<CoordinateSystem> LoadSystem(const std::string& name,
                                             ProjectionNeed need = ProjectionNeed::required);

}  // namespace geomath_files
