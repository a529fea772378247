#include "files/words/text_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "files/words/user_error.h"

namespace geomath_tools {

void WriteTextFile(const std::string& path, const std::string& text) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw UserError(fmt::format("{}: cannot be written: {}", path, std::strerror(errno)));
}

}  // namespace geomath_tools
