#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace geomath_files {

/// A file that is written beside its place and put there when it is whole; until then what stands
/// there stays. Files that a format keeps beside it (those of a Shapefile) are written and put with
/// it, and those of the file that it replaces go with that one. Symbolic links are followed, the
/// permissions of a replaced file are kept. What is no file (a device, a pipe) is written at once.
class OutputFile {
 public:
  /// Throws UserError where no file can be put, or where one stands that must not be written.
  explicit OutputFile(const std::string& path);
  /// Takes away what was not put in its place.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// As the user named it.
  const std::string& Name() const { return name_; }
  /// Where it is to be written: a file of the same name in a folder of its own.
  std::string Path() const { return writing_.string(); }

  /// Puts what was written in its place. Throws UserError when that fails; then the old file stands.
  void Place() { Place({this}); }
  /// The same for several, all or none of them.
  static void Place(const std::vector<OutputFile*>& files);

 private:
  struct Move {
    std::filesystem::path from, to, old;  // `from` empty: `to` only goes away; `old` keeps it
  };
  void RefuseUnwritable() const;
  void MakeFolder();
  std::vector<Move> Moves() const;
  /// Undoes the moves before the one that failed, and what that one did.
  static void TakeBack(const std::vector<Move>& moves, std::size_t failed);

  std::string name_;
  std::filesystem::path target_, folder_, writing_;  // without folder it is written at once
};

/// The files that the format of a suffix (".shp") keeps beside a file, there or not.
std::vector<std::filesystem::path> SideFiles(const std::filesystem::path& path,
                                             const std::string& suffix);

/// Throws UserError when several inputs are "-", standard input, which can be read once. To be asked
/// before the first of them is read.
void RefuseReadingTwice(const std::vector<std::string>& inputs);

/// Throws UserError when an output is a file that the run reads, by whatever name or link, or two
/// outputs are one. Empty names stand for nothing, "-" for standard input and output.
void RefuseOverwriting(const std::vector<std::string>& inputs,
                       const std::vector<std::string>& outputs);

}  // namespace geomath_files
