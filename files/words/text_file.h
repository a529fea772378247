#pragma once

#include <string>

namespace geomath_tools {

/// Writes a file, replacing one that exists. Throws UserError when it cannot be written whole.
void WriteTextFile(const std::string& path, const std::string& text);

}  // namespace geomath_tools
