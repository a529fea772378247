#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zel_cs::geomath {

/// Why the text of a file cannot be had.
struct FileFault {
  enum Kind { noFile, tooLarge, notOpened, notRead } kind = noFile;
  std::string system;  // what the system says of it, or nothing
};

/// The bytes of a regular file of at most `most` bytes; the path is UTF-8 on Windows. On a fault nothing,
/// and `fault` says which. Throws std::bad_alloc, and std::exception for a path that the system cannot represent.
///
/// The library opens files only here: a host without a file system links its own.
std::optional<std::string> TextOfFile(const char* path, std::uintmax_t most, FileFault& fault);

}  // namespace zel_cs::geomath
