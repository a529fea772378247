#pragma once

#include <string>

#include "files/system/system_file.h"

namespace geomath_files {

/// The coordinate system of a system's grid as WKT 2 (ISO 19162), made from the projection, the
/// ellipsoid and the seven parameters of the file, so that a GIS shows the points in their place.
/// It is compared with the system's own projection before it is returned: over two degrees in either
/// direction, about the middle of the system's area or the origin of the projection, PROJ agrees
/// within a centimetre.
///
/// Empty where no WKT describes the grid: for a projection that PROJ does not have or that differs
/// by more, for axes to the south or west, for a grid that a site or ground moves, and for positions
/// before a datum that are not those of WGS 84.
std::string GridWkt(const CoordinateSystem& system);

}  // namespace geomath_files
