#include "files/models/kept_shifts.h"

#include <algorithm>
#include <system_error>

namespace fs = std::filesystem;

namespace geomath_files {
namespace {

constexpr std::uintmax_t kMostBytes = std::uintmax_t{64} << 20;  // of files

}  // namespace

std::optional<FileState> FileState::Of(const std::string& file) {
  std::error_code error;
  FileState state{fs::absolute(file, error), 0, {}};
  if (!error) state.size = fs::file_size(state.path, error);
  if (!error) state.written = fs::last_write_time(state.path, error);
  if (error) return std::nullopt;
  return state;
}

KeptShifts& KeptShifts::Instance() {
  static KeptShifts kept;
  return kept;
}

KeptShifts::Shift KeptShifts::Find(const ShiftChoice& choice, const FileState& file) {
  const std::lock_guard lock(mutex_);
  const auto found = std::find_if(kept_.begin(), kept_.end(), [&](const Kept& each) {
    return each.choice == choice && each.file == file;
  });
  if (found == kept_.end()) return nullptr;
  kept_.splice(kept_.begin(), kept_, found);
  return found->shift;
}

void KeptShifts::Keep(const ShiftChoice& choice, const FileState& file, const Shift& shift) {
  if (file.size > kMostBytes) return;
  const std::lock_guard lock(mutex_);
  std::erase_if(kept_, [&](const Kept& each) {
    return each.choice == choice && each.file.path == file.path;
  });
  kept_.push_front({choice, file, shift});
  std::uintmax_t bytes = 0;
  std::erase_if(kept_, [&](const Kept& each) { return (bytes += each.file.size) > kMostBytes; });
}

}  // namespace geomath_files
