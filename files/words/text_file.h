#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace geomath_tools {

struct CloseInput {
  void operator()(std::FILE* file) const;
};
/// A file that is read, closed by its handle; standard input stays open.
using InputHandle = std::unique_ptr<std::FILE, CloseInput>;

/// Opens a file for reading, or standard input for "-". Throws UserError, which says why not.
InputHandle OpenInput(const std::string& path);

/// What stands for an input in messages: its path, or "standard input".
std::string InputName(const std::string& path);

/// The suffix of a file's name in lower case: ".csv", or nothing.
std::string SuffixOf(const std::string& path);

/// Writes a file, replacing one that exists. Throws UserError when it cannot be written whole.
void WriteTextFile(const std::string& path, const std::string& text);

}  // namespace geomath_tools
