#include "files/epsg/epsg_code.h"

#include <string_view>

#include "files/words/name_match.h"

namespace geomath_files {

std::string WithoutAuthority(const std::string& text) {
  constexpr std::string_view kAuthority = "epsg:";
  return LowerCase(text).starts_with(kAuthority) ? text.substr(kAuthority.size()) : text;
}

bool IsEpsgCode(const std::string& text) {
  constexpr std::size_t kLongest = 9;
  return !text.empty() && text.size() <= kLongest &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace geomath_files
