#pragma once

#include <string>

namespace geomath_files {

/// "27700" of "EPSG:27700", in any letter case; any other text as it is.
std::string WithoutAuthority(const std::string& text);

/// Whether a text is a number that may be a code of the registry: "27700".
bool IsEpsgCode(const std::string& text);

}  // namespace geomath_files
