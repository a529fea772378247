#pragma once

#include <ogrsf_frmts.h>

#include <string>

namespace geomath_tools {

/// Readies GDAL/OGR, once: registers its formats and keeps its messages off standard error.
void PrepareOgr();

/// The last complaint of GDAL/OGR as the end of a message: ": text", or nothing.
std::string OgrComplaint();

}  // namespace geomath_tools
