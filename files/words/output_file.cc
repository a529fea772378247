#include "files/words/output_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <random>
#include <system_error>
#include <utility>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "files/words/name_match.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace fs = std::filesystem;

namespace geomath_files {
namespace {

using std::error_code;

// Of a suffix: what replaces it, and what is put behind it, in the names of side files.
struct SideNames {
  const char* suffix;
  std::vector<const char*> instead, behind;
};

const std::vector<SideNames>& SideNameRows() {
  static const std::vector<SideNames> rows = {
      {".shp",
       {".shx", ".dbf", ".prj", ".cpg", ".qpj", ".qix", ".sbn", ".sbx", ".idm", ".ind"},
       {".xml"}},
      {".gpkg", {}, {"-wal", "-shm", "-journal"}},
      {".tif", {}, {".aux.xml", ".ovr", ".msk"}},
  };
  return rows;
}

// Where a path leads, at whose end there need not be a file.
fs::path Followed(fs::path path) {
  constexpr int kMostLinks = 40;  // as the system takes them
  error_code failed;
  for (int i = 0; i < kMostLinks && fs::is_symlink(path, failed); ++i)
    path = path.parent_path() / fs::read_symlink(path, failed);
  return path;
}

fs::path FolderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

[[noreturn]] void Complain(const std::string& name, const std::string& why) {
  throw UserError(fmt::format("{}: cannot be written: {}", name, why));
}

// Has the system write out what it holds back: a disk may only then be found full.
void WriteOut([[maybe_unused]] const fs::path& path, [[maybe_unused]] const std::string& name) {
#ifndef _WIN32
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) Complain(name, std::strerror(errno));
  const bool done = fsync(file) == 0;
  const int why = errno;
  close(file);
  if (!done) Complain(name, std::strerror(why));
#endif
}

// Owner and permissions of the file that stands there, as far as that is allowed.
void TakePermissions(const fs::path& file, const fs::path& old) {
#ifndef _WIN32
  struct stat status = {};
  if (stat(old.c_str(), &status) != 0) return;
  [[maybe_unused]] const int done = chown(file.c_str(), status.st_uid, status.st_gid);
#endif
  error_code ignored;
  const fs::perms permissions = fs::status(old, ignored).permissions();
  if (permissions != fs::perms::unknown) fs::permissions(file, permissions, ignored);
}

// The same file by whatever name or link; where none is yet, the same place.
bool IsSame(const fs::path& a, const fs::path& b) {
  error_code failed;
  const bool there = fs::exists(a, failed);
  if (there != fs::exists(b, failed)) return false;
  if (there) return fs::is_regular_file(a, failed) && fs::equivalent(a, b, failed);
  const auto place = [&](const fs::path& path) {
    return fs::weakly_canonical(fs::absolute(Followed(path), failed), failed);
  };
  return place(a) == place(b);
}

// "-" as the file that the shell has put there; nothing for a terminal, a pipe or a device.
fs::path FileOf(const std::string& name, const char* stream) {
  error_code failed;
  if (name != "-") return name;
  return fs::is_regular_file(stream, failed) ? fs::path(stream) : fs::path();
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : name_(path), target_(Followed(path)) {
  error_code failed;
  const fs::file_status status = fs::status(target_, failed);
  if (fs::is_directory(status)) throw UserError(name_ + ": is a directory");
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    writing_ = target_;
    return;
  }
  if (fs::exists(status)) RefuseUnwritable();
  MakeFolder();
  writing_ = folder_ / fs::path(path).filename();
}

void OutputFile::RefuseUnwritable() const {
  constexpr fs::perms kWritable =
      fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  error_code failed;
  bool writable = (fs::status(target_, failed).permissions() & kWritable) != fs::perms::none;
#ifndef _WIN32
  writable = writable && access(target_.c_str(), W_OK) == 0;
#endif
  if (!writable) Complain(name_, "the file that is there is read-only");
}

void OutputFile::MakeFolder() {
  std::random_device random;
  error_code failed;
  do {
    folder_ = FolderOf(target_) / fmt::format(".geomath-{:08x}", random());
  } while (!fs::create_directory(folder_, failed) && !failed);
  if (failed) {
    folder_.clear();
    Complain(name_, failed.message());
  }
}

OutputFile::~OutputFile() {
  error_code ignored;
  if (!folder_.empty()) fs::remove_all(folder_, ignored);
}

std::vector<OutputFile::Move> OutputFile::Moves() const {
  std::vector<Move> moves;
  const auto add = [&](const fs::path& from, const fs::path& to) {
    moves.push_back({from, to, folder_ / fmt::format("old {}", moves.size())});
  };
  if (folder_.empty()) return moves;
  // Side files are named after the place: a link may have another name than what it leads to.
  const std::string stem = writing_.stem().string();
  for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
    const std::string name = entry.path().filename().string();
    if (LowerCase(name) == LowerCase(writing_.filename().string())) continue;
    const std::string side = target_.stem().string() + name.substr(stem.size());
    add(entry.path(), Followed(FolderOf(target_) / side));
  }
  for (const fs::path& side : SideFiles(target_, SuffixOf(name_))) {
    const auto isMade = [&](const Move& move) { return IsSame(move.to, side); };
    if (fs::exists(side) && std::none_of(moves.begin(), moves.end(), isMade)) add({}, side);
  }
  add(writing_, target_);
  return moves;
}

void OutputFile::Place(const std::vector<OutputFile*>& files) {
  std::vector<Move> moves;
  for (const OutputFile* file : files) {
    const std::vector<Move> own = file->Moves();
    for (const Move& move : own) {
      if (move.from.empty()) continue;
      WriteOut(move.from, file->name_);
      TakePermissions(move.from, move.to);
    }
    moves.insert(moves.end(), own.begin(), own.end());
  }
  std::size_t begun = 0;
  try {
    for (; begun < moves.size(); ++begun) {
      const Move& move = moves[begun];
      if (fs::is_directory(move.to))
        throw fs::filesystem_error("", std::make_error_code(std::errc::is_a_directory));
      if (move.from.empty()) {
        fs::rename(move.to, move.old);
        continue;
      }
      error_code unlinked;
      // A second name keeps the old file, so that at no time there is none in the place.
      if (fs::exists(move.to)) fs::create_hard_link(move.to, move.old, unlinked);
      if (unlinked) fs::rename(move.to, move.old);
      fs::rename(move.from, move.to);
    }
  } catch (const fs::filesystem_error& error) {
    TakeBack(moves, begun);
    Complain(moves[begun].to.string(), error.code().message());
  }
}

void OutputFile::TakeBack(const std::vector<Move>& moves, std::size_t failed) {
  error_code ignored;
  for (std::size_t i = failed + 1; i-- > 0;) {
    if (fs::exists(moves[i].old, ignored))
      fs::rename(moves[i].old, moves[i].to, ignored);
    else if (i < failed)
      fs::remove(moves[i].to, ignored);
  }
}

std::vector<fs::path> SideFiles(const fs::path& path, const std::string& suffix) {
  std::vector<fs::path> sides;
  for (const SideNames& row : SideNameRows()) {
    if (suffix != row.suffix) continue;
    for (const char* end : row.instead) sides.push_back(fs::path(path).replace_extension(end));
    for (const char* end : row.behind) sides.push_back(fs::path(path) += end);
  }
  return sides;
}

void RefuseReadingTwice(const std::vector<std::string>& inputs) {
  if (std::count(inputs.begin(), inputs.end(), "-") > 1)
    throw UserError("-: standard input can be read once; name a file for the other");
}

void RefuseOverwriting(const std::vector<std::string>& inputs,
                       const std::vector<std::string>& outputs) {
  if (std::count(outputs.begin(), outputs.end(), "-") > 1)
    throw UserError("-: standard output takes one of the outputs; name a file for the other");
  std::vector<std::pair<fs::path, std::string>> taken;  // with what it is, for the message
  const auto take = [&](const fs::path& file, const std::string& name, const char* what) {
    if (file.empty()) return;
    taken.emplace_back(file, what);
    for (const fs::path& side : SideFiles(Followed(file), SuffixOf(name)))
      taken.emplace_back(side, what);
  };
  for (const std::string& input : inputs)
    take(FileOf(input, "/dev/stdin"), input, "is a file that is read");
  for (const std::string& output : outputs) {
    const fs::path main = FileOf(output, "/dev/stdout");
    if (main.empty()) continue;
    std::vector<fs::path> files = SideFiles(Followed(main), SuffixOf(output));
    files.push_back(main);
    for (const fs::path& file : files) {
      for (const auto& [other, what] : taken) {
        if (IsSame(file, other))
          throw UserError(
              fmt::format("{}: {}{}; choose another name for the output",
                          output == "-" ? "standard output" : output,
                          file == main ? "" : file.string() + ", which it would write, ", what));
      }
    }
    take(main, output, "is an output already");
  }
}

}  // namespace geomath_files
