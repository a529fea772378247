#pragma once

#include <string>

namespace geomath_files {

/// The path of a file that another one names: beside it, unless the name is absolute.
std::string SiblingPath(const std::string& file, const std::string& name);

}  // namespace geomath_files
