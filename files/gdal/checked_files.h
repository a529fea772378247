#pragma once

#include <memory>
#include <string>

namespace geomath_files {

struct WriteState;

/// Files that GDAL's drivers write without missing a failure. Some drivers do not look at what the
/// system says of a write; here every write, flush and closing of a file is looked at. Any number
/// may be in use at once.
class CheckedFiles {
 public:
  CheckedFiles();
  ~CheckedFiles();
  CheckedFiles(const CheckedFiles&) = delete;
  CheckedFiles& operator=(const CheckedFiles&) = delete;

  /// The name under which GDAL is to open the file.
  std::string NameFor(const std::string& path) const;
  /// What the system said of the first failure; empty when there was none.
  std::string Failure() const;

 private:
  std::shared_ptr<WriteState> state_;
};

}  // namespace geomath_files
