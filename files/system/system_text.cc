// The reading of system files, whose text system_file.cc understands.

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "files/system/system_file.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {

std::unique_ptr<CoordinateSystem> ReadSystemFile(const std::string& path) {
  return ParseSystem(ReadSystemText(path), InputName(path));
}

std::string ReadSystemText(const std::string& path) {
  constexpr std::size_t kLargestFile = 1 << 20;  // bytes; a description takes a few hundred
  const InputHandle file = OpenInput(path);
  std::string text;
  char part[4096];
  while (text.size() <= kLargestFile) {
    const std::size_t count = std::fread(part, 1, sizeof part, file.get());
    text.append(part, count);
    if (count < sizeof part) break;
  }
  const std::string name = InputName(path);
  if (text.size() > kLargestFile)
    throw UserError(fmt::format("{}: too large for a system file (1 MiB)", name));
  if (std::ferror(file.get()))
    throw UserError(fmt::format("{}: cannot be read: {}", name, std::strerror(errno)));
  return text;
}

}  // namespace geomath_files
