#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

/// Where the large published reference files stand: the directory that the environment variable
/// GEOMATH_REFERENCE_DATA names, or ../shared/data beside the source tree. Tests that need one of
/// them use REQUIRE_REFERENCE_FILE, which skips visibly when it is absent.
inline std::filesystem::path ReferenceFile(const std::string& relative) {
  const char* named = std::getenv("GEOMATH_REFERENCE_DATA");
  const std::filesystem::path root =
      named ? std::filesystem::path(named)
            : std::filesystem::path(GEOMATH_SOURCE_DIR) / ".." / "shared" / "data";
  return root / relative;
}

/// Skips the running test when the file is absent; otherwise `path` holds its name.
#define REQUIRE_REFERENCE_FILE(path, relative) \
  const auto path = ReferenceFile(relative);   \
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "reference file " << path << " is absent"
