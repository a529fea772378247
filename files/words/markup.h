#pragma once

#include <string>

namespace geomath_files {

/// Text as it stands in HTML and SVG, in attributes too.
std::string Escaped(const std::string& text);

}  // namespace geomath_files
