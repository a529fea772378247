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
                         const std::vector<std::string>& ofProj)
    : folders_(named) {
  for (const std::string& folder : named) {
    std::error_code error;
    fs::directory_iterator(folder, error);
    if (error) throw UserError(Printable(folder) + ": is no folder that can be read");
  }
  if (const char* list = std::getenv("GEOMATH_GRIDS")) {
    std::istringstream stream(list);
    for (std::string folder; std::getline(stream, folder, ':');) folders_.push_back(folder);
  }
  if (!output.empty()) {
    const fs::path folder = fs::path(output).parent_path();
    folders_.push_back(folder.empty() ? "." : folder.string());
  }
  folders_.insert(folders_.end(), ofProj.begin(), ofProj.end());
}

GridFolders::Files GridFolders::List() const {
  Files files;
  for (std::size_t i = 0; i < folders_.size(); ++i) {
    std::error_code error;
    fs::directory_iterator entry(folders_[i], error);
    std::vector<std::string> names;
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
      names.push_back(entry->path().filename().string());
    std::sort(names.begin(), names.end());
    for (const std::string& name : names)
      files.emplace(LowerCase(name), Found{(fs::path(folders_[i]) / name).string(), i});
  }
  return files;
}

std::optional<GridFolders::Found> GridFolders::Find(const std::string& name) const {
  if (!files_) files_ = List();
  const auto found = files_->find(LowerCase(name));
  if (found == files_->end()) return std::nullopt;
  return found->second;
}

}  // namespace geomath_files
