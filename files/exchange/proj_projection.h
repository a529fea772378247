#pragma once

#include <optional>
#include <string>
#include <vector>

#include "geomath/proj/geo_proj.h"

namespace geomath_files {

/// A projection of that short name in PROJ's words, "+proj=etmerc +a=… +lon_0=…"; nothing where PROJ
/// has no such method. The method may lack a parameter of ours, and its series may end elsewhere:
/// the caller compares the two where he promises something.
std::optional<std::string> ProjProjection(const zel_cs::geomath::TGeoProj& projection,
                                          const std::string& name);

/// The short names that ProjProjection knows.
std::vector<std::string> ProjProjectionNames();

/// "+a=… +b=…"
std::string ProjEllipsoid(const zel_cs::geomath::Ellipsoid& ellipsoid);

}  // namespace geomath_files
