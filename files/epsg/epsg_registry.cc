#include "files/epsg/epsg_registry.h"

#include <fmt/format.h>
#include <proj.h>

#include <algorithm>
#include <cstring>
#include <sstream>

#include "files/words/name_match.h"
#include "files/words/user_error.h"

using nlohmann::json;

namespace geomath_files {
namespace {

constexpr const char* kAuthority = "EPSG";

// PROJ's objects with its ways to destroy them.
struct Destroy {
  void operator()(PJ* object) const { proj_destroy(object); }
  void operator()(PJ_OBJ_LIST* list) const { proj_list_destroy(list); }
  void operator()(PJ_OPERATION_FACTORY_CONTEXT* factory) const {
    proj_operation_factory_context_destroy(factory);
  }
};
template <class T>
using Owned = std::unique_ptr<T, Destroy>;

// "INVERSE(EPSG)" is the authority of a transformation that PROJ has turned round.
std::string CodeOf(const PJ* object) {
  const char* authority = proj_get_id_auth_name(object, 0);
  const char* code = proj_get_id_code(object, 0);
  const bool registered = authority && code && std::strstr(authority, kAuthority);
  return registered ? code : "";
}

GeoBox AreaOf(PJ_CONTEXT* context, const PJ* object, std::string* name = nullptr) {
  GeoBox box;
  const char* text = nullptr;
  const GeoBox world;
  if (!proj_get_area_of_use(context, object, &box.west, &box.south, &box.east, &box.north, &text))
    return world;
  if (name && text) *name = text;
  constexpr double kUnknown = -1000;
  return box.west == kUnknown ? world : box;
}

json DocumentOf(PJ_CONTEXT* context, const PJ* object) {
  const char* text = proj_as_projjson(context, object, nullptr);
  return text ? json::parse(text) : json::object();
}

}  // namespace

struct EpsgRegistry::Context {
  PJ_CONTEXT* pj = proj_context_create();

  Context() {
    proj_log_level(pj, PJ_LOG_NONE);
    proj_context_set_enable_network(pj, 0);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context() { proj_context_destroy(pj); }

  Owned<PJ> Find(const std::string& code) const {
    return Owned<PJ>(
        proj_create_from_database(pj, kAuthority, code.c_str(), PJ_CATEGORY_CRS, 0, nullptr));
  }
  Owned<PJ> FindOperation(const std::string& code, bool withFilesOfProj) const {
    return Owned<PJ>(proj_create_from_database(
        pj, kAuthority, code.c_str(), PJ_CATEGORY_COORDINATE_OPERATION, withFilesOfProj, nullptr));
  }
  RegisteredOperation Describe(const PJ* operation) const {
    RegisteredOperation found;
    found.code = CodeOf(operation);
    found.name = proj_get_name(operation);
    found.accuracy = proj_coordoperation_get_accuracy(pj, operation);
    found.document = DocumentOf(pj, operation);
    found.area = AreaOf(pj, operation, &found.areaName);
    return found;
  }
};

EpsgRegistry::EpsgRegistry() : context_(std::make_unique<Context>()) {
  if (!proj_context_get_database_path(context_->pj))
    throw UserError("the EPSG registry is not found: PROJ has no database proj.db here");
}

EpsgRegistry::~EpsgRegistry() = default;

std::string EpsgRegistry::Version() const {
  const char* version = proj_context_get_database_metadata(context_->pj, "EPSG.VERSION");
  return fmt::format("EPSG {}", version ? version : "of unknown version");
}

RegisteredCrs EpsgRegistry::Crs(const std::string& code) const {
  const Owned<PJ> crs = context_->Find(code);
  if (!crs)
    throw UserError(fmt::format("EPSG:{}: no coordinate reference system of the registry ({})",
                                Printable(code), Version()));
  RegisteredCrs found;
  found.code = code;
  found.name = proj_get_name(crs.get());
  found.document = DocumentOf(context_->pj, crs.get());
  found.area = AreaOf(context_->pj, crs.get());
  found.deprecated = proj_is_deprecated(crs.get()) != 0;
  if (proj_get_type(crs.get()) == PJ_TYPE_COMPOUND_CRS)
    found.horizontal = CodeOf(Owned<PJ>(proj_crs_get_sub_crs(context_->pj, crs.get(), 0)).get());
  if (!found.deprecated) return found;
  const Owned<PJ_OBJ_LIST> successors(proj_get_non_deprecated(context_->pj, crs.get()));
  for (int i = 0; successors && i < proj_list_get_count(successors.get()); ++i) {
    const Owned<PJ> successor(proj_list_get(context_->pj, successors.get(), i));
    found.successors.push_back(CodeOf(successor.get()));
  }
  return found;
}

std::vector<ListedCrs> EpsgRegistry::ProjectedSystems() const {
  struct DestroyList {
    void operator()(PROJ_CRS_INFO** list) const { proj_crs_info_list_destroy(list); }
  };
  int count = 0;
  const std::unique_ptr<PROJ_CRS_INFO*, DestroyList> list(
      proj_get_crs_info_list_from_database(context_->pj, kAuthority, nullptr, &count));
  std::vector<ListedCrs> systems;
  for (int i = 0; i < count; ++i) {
    const PROJ_CRS_INFO& row = *list.get()[i];
    if (row.type != PJ_TYPE_PROJECTED_CRS || row.deprecated) continue;
    ListedCrs& system = systems.emplace_back();
    system.code = row.code;
    system.name = row.name;
    system.areaName = row.area_name ? row.area_name : "";
    if (row.bbox_valid)
      system.area = {row.west_lon_degree, row.south_lat_degree, row.east_lon_degree,
                     row.north_lat_degree};
  }
  return systems;
}

std::vector<RegisteredOperation> EpsgRegistry::Operations(const std::string& from,
                                                          const std::string& to, const GeoBox& box,
                                                          Joining joining) const {
  PJ_CONTEXT* pj = context_->pj;
  const Owned<PJ> source = context_->Find(from), target = context_->Find(to);
  const Owned<PJ_OPERATION_FACTORY_CONTEXT> factory(
      proj_create_operation_factory_context(pj, nullptr));
  proj_operation_factory_context_set_area_of_interest(pj, factory.get(), box.west, box.south,
                                                      box.east, box.north);
  proj_operation_factory_context_set_spatial_criterion(pj, factory.get(),
                                                       PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
  // Which files happen to be installed must not change what is chosen.
  proj_operation_factory_context_set_grid_availability_use(pj, factory.get(),
                                                           PROJ_GRID_AVAILABILITY_IGNORED);
  // Grids under the registry's names and methods, not those of PROJ's own files.
  proj_operation_factory_context_set_use_proj_alternative_grid_names(pj, factory.get(), 0);
  proj_operation_factory_context_set_allow_ballpark_transformations(pj, factory.get(), 0);
  if (joining == Joining::none)
    proj_operation_factory_context_set_allow_use_intermediate_crs(pj, factory.get(),
                                                                  PROJ_INTERMEDIATE_CRS_USE_NEVER);
  const Owned<PJ_OBJ_LIST> list(
      proj_create_operations(pj, source.get(), target.get(), factory.get()));
  std::vector<RegisteredOperation> operations;
  for (int i = 0; list && i < proj_list_get_count(list.get()); ++i) {
    const Owned<PJ> operation(proj_list_get(pj, list.get(), i));
    operations.push_back(context_->Describe(operation.get()));
  }
  return operations;
}

std::optional<RegisteredOperation> EpsgRegistry::Operation(const std::string& code,
                                                           bool turnedRound) const {
  Owned<PJ> operation = context_->FindOperation(code, false);
  if (operation && turnedRound)
    operation.reset(proj_coordoperation_create_inverse(context_->pj, operation.get()));
  if (!operation) return std::nullopt;
  return context_->Describe(operation.get());
}

std::optional<ProjGrid> EpsgRegistry::GridOfProj(const std::string& code) const {
  const Owned<PJ> operation = context_->FindOperation(code, true);
  if (!operation) return std::nullopt;
  const json document = DocumentOf(context_->pj, operation.get());
  for (const json& parameter : document.value("parameters", json::array())) {
    const json value = parameter.value("value", json());
    const std::string method = document.at("method").value("name", "");
    if (value.is_string()) return ProjGrid{value, method.starts_with("Inverse of ")};
  }
  return std::nullopt;
}

std::vector<std::string> EpsgRegistry::ProjFolders() {
  const char* path = proj_info().searchpath;
  std::istringstream stream(path ? path : "");
  std::vector<std::string> folders;
  for (std::string folder; std::getline(stream, folder, ':');) folders.push_back(folder);
  return folders;
}

std::string EpsgRegistry::FindInProj(const std::string& name) const {
  const char* path = nullptr;
  const int known = proj_grid_get_info_from_database(context_->pj, name.c_str(), &path, nullptr,
                                                     nullptr, nullptr, nullptr, nullptr);
  return known && path ? path : "";
}

}  // namespace geomath_files
