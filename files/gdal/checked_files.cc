#include "files/gdal/checked_files.h"

#include <cpl_vsi.h>
#include <fmt/format.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>

namespace geomath_files {

/// What became of the files of one object.
struct WriteState {
  int number = 0;
  std::atomic<int> error{0};  // errno of the first failure

  void Note() {
    int none = 0;
    error.compare_exchange_strong(none, errno != 0 ? errno : EIO);
  }
};

namespace {

// GDAL calls what is installed for this prefix with the rest of the name: "7/home/x/out.geojson",
// where 7 is the number of the object.
constexpr const char* kPrefix = "/vsigeomath/";

const char* PathIn(const char* rest) {
  const char* slash = std::strchr(rest, '/');
  return slash ? slash : rest;
}

class States {
 public:
  void Add(const std::shared_ptr<WriteState>& state) {
    const std::lock_guard lock(mutex_);
    state->number = ++last_;
    states_[state->number] = state;
  }
  void Remove(int number) {
    const std::lock_guard lock(mutex_);
    states_.erase(number);
  }
  std::shared_ptr<WriteState> Find(const char* rest) {
    const std::lock_guard lock(mutex_);
    const auto found = states_.find(std::atoi(rest));
    return found == states_.end() ? nullptr : found->second;
  }

 private:
  std::mutex mutex_;
  int last_ = 0;
  std::map<int, std::shared_ptr<WriteState>> states_;
};

States& TheStates() {
  static auto* states = new States;  // outlives what GDAL closes at the program's end
  return *states;
}

enum class LastAct { none, read, write };

struct CheckedFile {
  std::FILE* file;
  std::shared_ptr<WriteState> state;
  LastAct last = LastAct::none;

  // Between reading and writing a stream wants to be positioned (ISO C 7.21.5.3).
  void Begin(LastAct act) {
    if (last != LastAct::none && last != act) std::fseek(file, 0, SEEK_CUR);
    last = act;
  }
};

CheckedFile& At(void* file) { return *static_cast<CheckedFile*>(file); }

// The calls of VSIFilesystemPluginCallbacksStruct, each with the meaning of its name in C.

int Stat(void*, const char* name, VSIStatBufL* status, int) {
  return VSIStatL(PathIn(name), status);
}

int Unlink(void*, const char* name) { return std::remove(PathIn(name)); }

void* Open(void*, const char* name, const char* access) {
  std::shared_ptr<WriteState> state = TheStates().Find(name);
  std::FILE* file = state ? std::fopen(PathIn(name), access) : nullptr;
  return file ? new CheckedFile{file, std::move(state)} : nullptr;
}

vsi_l_offset Tell(void* file) { return static_cast<vsi_l_offset>(ftello(At(file).file)); }

int Seek(void* file, vsi_l_offset offset, int whence) {
  At(file).last = LastAct::none;
  const int done = fseeko(At(file).file, static_cast<off_t>(offset), whence);
  if (done != 0) At(file).state->Note();  // what was held back may have been written
  return done;
}

std::size_t Read(void* file, void* buffer, std::size_t size, std::size_t count) {
  At(file).Begin(LastAct::read);
  return std::fread(buffer, size, count, At(file).file);
}

int IsAtEnd(void* file) { return std::feof(At(file).file) != 0; }

std::size_t Write(void* file, const void* buffer, std::size_t size, std::size_t count) {
  At(file).Begin(LastAct::write);
  const std::size_t written = std::fwrite(buffer, size, count, At(file).file);
  if (written != count) At(file).state->Note();
  return written;
}

int Flush(void* file) {
  const int done = std::fflush(At(file).file);
  if (done != 0) At(file).state->Note();
  return done;
}

int Truncate(void* file, vsi_l_offset size) {
  std::FILE* stream = At(file).file;
  const bool done =
      std::fflush(stream) == 0 && ftruncate(fileno(stream), static_cast<off_t>(size)) == 0;
  if (!done) At(file).state->Note();
  return done ? 0 : -1;
}

int Close(void* file) {
  const std::unique_ptr<CheckedFile> own(&At(file));
  const int done = std::fclose(own->file);
  if (done != 0) own->state->Note();
  return done;
}

void Install() {
  static const bool installed = [] {
    VSIFilesystemPluginCallbacksStruct* calls = VSIAllocFilesystemPluginCallbacksStruct();
    calls->stat = Stat;
    calls->unlink = Unlink;
    calls->open = Open;
    calls->tell = Tell;
    calls->seek = Seek;
    calls->read = Read;
    calls->eof = IsAtEnd;
    calls->write = Write;
    calls->flush = Flush;
    calls->truncate = Truncate;
    calls->close = Close;
    const bool done = VSIInstallPluginHandler(kPrefix, calls) == 0;
    VSIFreeFilesystemPluginCallbacksStruct(calls);
    return done;
  }();
  static_cast<void>(installed);
}

}  // namespace

CheckedFiles::CheckedFiles() : state_(std::make_shared<WriteState>()) {
  Install();
  TheStates().Add(state_);
}

CheckedFiles::~CheckedFiles() { TheStates().Remove(state_->number); }

std::string CheckedFiles::NameFor(const std::string& path) const {
  return fmt::format("{}{}{}", kPrefix, state_->number,
                     std::filesystem::absolute(path).generic_string());
}

std::string CheckedFiles::Failure() const {
  const int error = state_->error;
  return error == 0 ? std::string() : std::strerror(error);
}

}  // namespace geomath_files
