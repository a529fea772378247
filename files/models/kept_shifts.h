#pragma once

#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <optional>

#include "files/models/shift_file.h"

namespace geomath_files {

/// Where a file is, and what is known of it without opening it.
struct FileState {
  std::filesystem::path path;
  std::uintmax_t size;  ///< bytes
  std::filesystem::file_time_type written;
  /// Whether nothing seems to have changed.
  bool operator==(const FileState&) const = default;

  /// Nothing where there is no such file.
  static std::optional<FileState> Of(const std::string& file);
};

/// The shifts that were opened last, for those who open them again: the grid of a country takes longer
/// to read than all else that a system needs. A file that was written since is another one. Safe to use
/// from several threads.
class KeptShifts {
 public:
  using Shift = std::shared_ptr<const zel_cs::geomath::CoordinateShift>;

  static KeptShifts& Instance();

  /// The shift that is kept of a file in this state; null when there is none.
  Shift Find(const ShiftChoice& choice, const FileState& file);
  /// Keeps a shift that was read from a file in this state, in the place of those that nobody asked
  /// for longest.
  void Keep(const ShiftChoice& choice, const FileState& file, const Shift& shift);

 private:
  struct Kept {
    ShiftChoice choice;
    FileState file;
    Shift shift;
  };

  std::mutex mutex_;
  std::list<Kept> kept_;  // the one that was asked for last in front
};

}  // namespace geomath_files
