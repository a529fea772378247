#include "geomath/platform/file_text.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace zel_cs::geomath {
namespace {

// Windows would take a narrow path in the code page of the user; elsewhere its bytes stand as they are.
std::filesystem::path PathOf(const char* path) {
#if defined(_WIN32)
  return reinterpret_cast<const char8_t*>(path);
#else
  return path;
#endif
}

}  // namespace

std::optional<std::string> TextOfFile(const char* path, std::uintmax_t most, FileFault& fault) {
  const auto fails = [&fault](FileFault::Kind kind, const std::error_code& code = {}) {
    fault = {kind, code ? code.message() : ""};
    return std::nullopt;
  };
  std::error_code code;
  if (!path || !std::filesystem::is_regular_file(PathOf(path), code))
    return fails(FileFault::noFile, code);
  std::ifstream file(PathOf(path), std::ios::binary | std::ios::ate);
  const std::streamoff size = file.tellg();
  if (size < 0) return fails(FileFault::notOpened);
  if (static_cast<std::uintmax_t>(size) > most) return fails(FileFault::tooLarge);
  std::string text(static_cast<std::size_t>(size), '\0');
  file.seekg(0);
  if (!file.read(text.data(), size)) return fails(FileFault::notRead);
  return text;
}

}  // namespace zel_cs::geomath
