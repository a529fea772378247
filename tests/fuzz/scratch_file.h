#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

/// A file that holds a fuzzer's bytes while it lives, for readers that take a path: in memory where
/// the system has a place for that.
class ScratchFile {
 public:
  ScratchFile(const std::string& suffix, const std::uint8_t* data, std::size_t size)
      : path_(Directory() / ("geomath_fuzz_" + std::to_string(getpid()) + suffix)) {
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { std::filesystem::remove(path_); }

  std::string Path() const { return path_.string(); }

 private:
  static std::filesystem::path Directory() {
    const std::filesystem::path memory = "/dev/shm";
    return std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
  }

  std::filesystem::path path_;
};
