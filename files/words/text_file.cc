#include "files/words/text_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_tools {

void CloseInput::operator()(std::FILE* file) const {
  if (file != stdin) std::fclose(file);
}

InputHandle OpenInput(const std::string& path) {
  if (path == "-") return InputHandle(stdin);
  if (std::filesystem::is_directory(path)) throw UserError(path + ": is a directory");
  InputHandle file(std::fopen(path.c_str(), "rb"));
  if (!file) throw UserError(fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));
  return file;
}

std::string InputName(const std::string& path) { return path == "-" ? "standard input" : path; }

std::string SuffixOf(const std::string& path) {
  return LowerCase(std::filesystem::path(path).extension().string());
}

void WriteTextFile(const std::string& path, const std::string& text) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw UserError(fmt::format("{}: cannot be written: {}", path, std::strerror(errno)));
}

}  // namespace geomath_tools
