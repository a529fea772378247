#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace geomath_files {

/// The folders in which grids are looked for.
class GridFolders {
 public:
  GridFolders() = default;
  /// In this order: the folders that the caller names, those of the environment variable
  /// GEOMATH_GRIDS (separated by colons), that of the file which is to be written (none for an empty
  /// text), and PROJ's. Throws UserError for a named one that cannot be read.
  GridFolders(const std::vector<std::string>& named, const std::string& output,
              const std::vector<std::string>& ofProj);

  /// A file, and the number of its folder in that order.
  struct Found {
    std::string path;
    std::size_t folder = 0;
  };
  /// The first file of that name, in any letter case.
  std::optional<Found> Find(const std::string& name) const;

 private:
  bool Add(const std::string& folder);

  std::size_t folders_ = 0;
  std::map<std::string, Found> files_;  // by their names in lower case
};

}  // namespace geomath_files
