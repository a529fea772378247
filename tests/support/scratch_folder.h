#pragma once

#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

/// A folder of its own for one test, removed with all that it holds at the end: tests of one
/// fixture run side by side in processes of their own and must not meet.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::random_device random;
    for (int tries = 0; tries < 100; ++tries) {
      path_ = std::filesystem::temp_directory_path() / ("geomath_test_" + std::to_string(random()));
      if (std::filesystem::create_directory(path_)) return;
    }
    throw std::runtime_error("no scratch folder can be made");
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};
