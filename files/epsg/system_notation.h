#pragma once

namespace geomath_files {

/// Notations of a coordinate system.
enum class SystemNotation {
  wkt,       ///< WKT 2 (ISO 19162:2019)
  projjson,  ///< PROJJSON
  proj,      ///< as PROJ's strings have it, which leave things out
  system,    ///< a system file, with the best transformation to WGS 84
};

}  // namespace geomath_files
