#include "files/words/sibling_path.h"

#include <filesystem>

namespace geomath_files {

std::string SiblingPath(const std::string& file, const std::string& name) {
  return (std::filesystem::path(file).parent_path() / name).string();
}

}  // namespace geomath_files
