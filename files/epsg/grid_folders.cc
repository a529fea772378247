#include "files/epsg/grid_folders.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace fs = std::filesystem;

GridFolders::GridFolders(const std::vector<std::string>& named, const std::string& output,
                         const std::vector<std::string>& ofProj) {
  for (const std::string& folder : named)
    if (!Add(folder)) throw UserError(Printable(folder) + ": is no folder that can be read");
  if (const char* list = std::getenv("GEOMATH_GRIDS")) {
    std::istringstream stream(list);
    for (std::string folder; std::getline(stream, folder, ':');) Add(folder);
  }
  if (!output.empty()) {
    const fs::path folder = fs::path(output).parent_path();
    Add(folder.empty() ? "." : folder.string());
  }
  for (const std::string& folder : ofProj) Add(folder);
}

bool GridFolders::Add(const std::string& folder) {
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  if (folder.empty() || error) return false;
  std::vector<std::string> names;
  for (; !error && entry != fs::directory_iterator(); entry.increment(error))
    names.push_back(entry->path().filename().string());
  std::sort(names.begin(), names.end());
  for (const std::string& name : names)
    files_.emplace(LowerCase(name), Found{(fs::path(folder) / name).string(), folders_});
  ++folders_;
  return true;
}

std::optional<GridFolders::Found> GridFolders::Find(const std::string& name) const {
  const auto found = files_.find(LowerCase(name));
  if (found == files_.end()) return std::nullopt;
  return found->second;
}

}  // namespace geomath_files
