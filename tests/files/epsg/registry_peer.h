#pragma once

#include <proj.h>

#include <memory>
#include <string>
#include <vector>

#include "files/epsg/epsg_registry.h"

/// The registry as PROJ has it: objects that are given back by themselves.
struct DestroyPj {
  void operator()(PJ* object) const { proj_destroy(object); }
  void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
};
template <class T>
using Owned = std::unique_ptr<T, DestroyPj>;

/// A context that says nothing and looks for files in `folder` before where PROJ does.
inline Owned<PJ_CONTEXT> ContextWith(const std::string& folder) {
  Owned<PJ_CONTEXT> context(proj_context_create());
  proj_log_level(context.get(), PJ_LOG_NONE);
  std::vector<std::string> folders = geomath_files::EpsgRegistry::ProjFolders();
  folders.insert(folders.begin(), folder);
  std::vector<const char*> paths;
  for (const std::string& each : folders) paths.push_back(each.c_str());
  proj_context_set_search_paths(context.get(), static_cast<int>(paths.size()), paths.data());
  return context;
}

/// The codes of its operations, alone and concatenated.
inline std::vector<std::string> OperationCodes(PJ_CONTEXT* context) {
  std::vector<std::string> codes;
  for (const PJ_TYPE type : {PJ_TYPE_TRANSFORMATION, PJ_TYPE_CONCATENATED_OPERATION}) {
    PROJ_STRING_LIST list = proj_get_codes_from_database(context, "EPSG", type, 0);
    for (char** code = list; code && *code; ++code) codes.emplace_back(*code);
    proj_string_list_destroy(list);
  }
  return codes;
}
