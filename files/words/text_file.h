#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/words/output_file.h"

namespace geomath_files {

/// Closes a file that is read; standard input stays open.
struct CloseInput {
  /// Takes a handle of `OpenInput`.
  void operator()(std::FILE* file) const;
};
/// A file that is read, closed by its handle.
using InputHandle = std::unique_ptr<std::FILE, CloseInput>;

/// Opens a file for reading, or standard input for "-". Throws UserError, which says why not.
InputHandle OpenInput(const std::string& path);

/// Throws UserError for a path that GDAL would take for something else than a local file: a network
/// address, an archive, memory.
void RequireLocalPath(const std::string& path);

/// What stands for an input in messages: its path, or "standard input".
std::string InputName(const std::string& path);

/// The suffix of a file's name in lower case: ".csv", or nothing.
std::string SuffixOf(const std::string& path);

/// Text that goes to a file, whole or not at all, or to standard output for "-". What fails throws
/// UserError.
class TextOutput {
 public:
  /// Throws UserError where no file can be put.
  explicit TextOutput(const std::string& path);
  ~TextOutput();
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  /// Appends the text, which may be held back.
  void Write(std::string_view text);
  /// Hands on what is still held back.
  void Flush();
  /// Ends the writing and puts the file in its place.
  void Close() { Close({this}); }
  /// The same for several: their files come together or not at all.
  static void Close(const std::vector<TextOutput*>& outputs);

 private:
  void End();
  [[noreturn]] void Complain() const;

  std::string name_;
  std::optional<OutputFile> place_;  // none for standard output
  std::FILE* file_;
};

/// A file that is to be written.
struct NamedText {
  std::string path;  ///< "-" for standard output
  std::string text;  ///< all that is to stand in it
};

/// Writes files, replacing those that exist: all of them whole, or none. Throws UserError.
void WriteTextFiles(const std::vector<NamedText>& files);

}  // namespace geomath_files
