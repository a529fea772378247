#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace geomath_files {

/// The folders in which grids are looked for. They are read when the first name is asked for; an object
/// serves one thread at a time.
class GridFolders {
 public:
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
  using Files = std::map<std::string, Found>;  // by their names in lower case
  Files List() const;

  std::vector<std::string> folders_;
  mutable std::optional<Files> files_;
};

}  // namespace geomath_files
