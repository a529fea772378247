#include "files/epsg/epsg_registry.h"

#include <fmt/format.h>
#include <proj.h>
#include <proj_experimental.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <sstream>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "files/epsg/operation_steps.h"
#include "files/epsg/registry_tables.h"
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

// All systems of the registry.
struct CrsList {
  explicit CrsList(PJ_CONTEXT* pj)
      : rows(proj_get_crs_info_list_from_database(pj, kAuthority, nullptr, &count)) {}
  CrsList(const CrsList&) = delete;
  CrsList& operator=(const CrsList&) = delete;
  ~CrsList() { proj_crs_info_list_destroy(rows); }

  int count = 0;
  PROJ_CRS_INFO** rows;
};

// "INVERSE(EPSG)" is the authority of a transformation that PROJ has turned round.
std::string CodeOf(const PJ* object) {
  if (!object) return "";
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
  const char* const briefly[] = {"MULTILINE=NO", "SCHEMA=", nullptr};
  const char* text = proj_as_projjson(context, object, briefly);
  return text ? json::parse(text) : json::object();
}

// The database that PROJ finds.
std::unique_ptr<RegistryTables> OpenTables() {
  std::error_code ignored;
  for (const std::string& folder : EpsgRegistry::ProjFolders())
    if (const auto path = std::filesystem::path(folder) / "proj.db";
        std::filesystem::exists(path, ignored))
      return RegistryTables::Open(path.string());
  return nullptr;
}

// A context of PROJ, made when it is needed: the tables answer most questions alone.
class LazyContext {
 public:
  LazyContext() = default;
  LazyContext(const LazyContext&) = delete;
  LazyContext& operator=(const LazyContext&) = delete;
  ~LazyContext() { proj_context_destroy(made_); }

  operator PJ_CONTEXT*() const {
    if (made_) return made_;
    made_ = proj_context_create();
    proj_log_level(made_, PJ_LOG_NONE);
    proj_context_set_enable_network(made_, 0);
    return made_;
  }

 private:
  mutable PJ_CONTEXT* made_ = nullptr;
};

}  // namespace

struct EpsgRegistry::Context {
  const LazyContext pj;
  const std::unique_ptr<RegistryTables> tables = OpenTables();

  Owned<PJ> Find(const std::string& code) const {
    return Owned<PJ>(
        proj_create_from_database(pj, kAuthority, code.c_str(), PJ_CATEGORY_CRS, 0, nullptr));
  }
  // The system whose code was probably meant, as the end of a message.
  std::string SimilarTo(const std::string& code) const {
    const CrsList list(pj);
    std::vector<std::string> codes;
    for (int i = 0; i < list.count; ++i) codes.emplace_back(list.rows[i]->code);
    const std::string nearest = NearestName(code, codes);
    for (int i = 0; i < list.count; ++i)
      if (list.rows[i]->code == nearest)
        return fmt::format("; did you mean EPSG:{} {}?", nearest, list.rows[i]->name);
    return "";
  }
  // With heights, as Operations() takes it.
  Owned<PJ> FindWithHeights(const std::string& system) const {
    const std::size_t plus = system.find('+');
    if (plus == std::string::npos) return Find(system);
    const std::string code = system.substr(0, plus), heights = system.substr(plus + 1);
    if (heights != "h")
      return Owned<PJ>(proj_create(pj, fmt::format("EPSG:{}+{}", code, heights).c_str()));
    return Owned<PJ>(proj_crs_promote_to_3D(pj, nullptr, Find(code).get()));
  }
  // The code of the geographic system with two axes on the datum of one with any.
  std::string GeographicCode(const PJ* crs) const {
    const Owned<PJ> geodetic(proj_crs_get_geodetic_crs(pj, crs));
    if (!geodetic) return "";
    if (proj_get_type(geodetic.get()) == PJ_TYPE_GEOGRAPHIC_2D_CRS)
      if (std::string code = CodeOf(geodetic.get()); !code.empty()) return code;
    const Owned<PJ> datum(proj_crs_get_datum_forced(pj, geodetic.get()));
    if (const std::string code = CodeOf(datum.get()); !code.empty()) return OnDatum(code);
    return Identified(geodetic.get());
  }
  RegisteredCrs Describe(const PJ* crs, const std::string& code) const {
    RegisteredCrs found;
    found.code = code;
    found.name = proj_get_name(crs);
    found.document = DocumentOf(pj, crs);
    found.area = AreaOf(pj, crs);
    found.deprecated = proj_is_deprecated(crs) != 0;
    found.geographic = GeographicCode(crs);
    if (proj_get_type(crs) != PJ_TYPE_COMPOUND_CRS) return found;
    found.horizontal = CodeOf(Owned<PJ>(proj_crs_get_sub_crs(pj, crs, 0)).get());
    found.vertical = CodeOf(Owned<PJ>(proj_crs_get_sub_crs(pj, crs, 1)).get());
    return found;
  }
  RegisteredCrs DescribeRegistered(const PJ* crs, const std::string& code) const {
    RegisteredCrs found = Describe(crs, code);
    if (!found.deprecated) return found;
    const Owned<PJ_OBJ_LIST> successors(proj_get_non_deprecated(pj, crs));
    for (int i = 0; successors && i < proj_list_get_count(successors.get()); ++i)
      found.successors.push_back(CodeOf(Owned<PJ>(proj_list_get(pj, successors.get(), i)).get()));
    return found;
  }
  // The first file that PROJ has for an operation.
  std::optional<ProjGrid> FindGrid(const std::string& code) const {
    const Owned<PJ> operation = FindOperation(code, true);
    if (!operation) return std::nullopt;
    const char* method = nullptr;
    if (!proj_coordoperation_get_method_info(pj, operation.get(), &method, nullptr, nullptr))
      return std::nullopt;
    const int count = proj_coordoperation_get_param_count(pj, operation.get());
    for (int i = 0; i < count; ++i) {
      const char* file = nullptr;
      proj_coordoperation_get_param(pj, operation.get(), i, nullptr, nullptr, nullptr, nullptr,
                                    &file, nullptr, nullptr, nullptr, nullptr, nullptr);
      if (file && *file) return ProjGrid{file, std::string_view(method).starts_with("Inverse of ")};
    }
    return std::nullopt;
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
    found.document = std::make_shared<const json>(DocumentOf(pj, operation));
    found.area = AreaOf(pj, operation, &found.areaName);
    return found;
  }
  struct FoundFile {
    std::string path, address;  // empty for none
  };
  FoundFile FileOfProj(const std::string& name) const {
    if (!tables) return AskForFile(name);
    const std::optional<GridFile> file = tables->File(name);
    if (!file) return {};
    std::error_code ignored;
    for (const std::string& each : file->names)
      for (const std::string& folder : EpsgRegistry::ProjFolders())
        if (const auto path = std::filesystem::path(folder) / each;
            std::filesystem::is_regular_file(path, ignored))
          return {path.string(), file->address};
    return {"", file->address};
  }
  FoundFile AskForFile(const std::string& name) const {
    const char *path = nullptr, *address = nullptr;
    const int known = proj_grid_get_info_from_database(pj, name.c_str(), &path, nullptr, &address,
                                                       nullptr, nullptr, nullptr);
    return {known && path ? path : "", known && address ? address : ""};
  }
  // As Operations() takes it.
  std::vector<RegisteredOperation> FindOperations(const std::string& from, const std::string& to,
                                                  const GeoBox& box, Joining joining) const {
    const Owned<PJ> source = FindWithHeights(from), target = FindWithHeights(to);
    const Owned<PJ_OPERATION_FACTORY_CONTEXT> factory(
        proj_create_operation_factory_context(pj, nullptr));
    // A place becomes a box of a tenth of a millimetre: of one without surface PROJ looks at the latitude.
    const double margin = box.Surface() > 0 ? 0 : 1e-9;
    proj_operation_factory_context_set_area_of_interest(pj, factory.get(), box.west - margin,
                                                        box.south - margin, box.east + margin,
                                                        box.north + margin);
    proj_operation_factory_context_set_spatial_criterion(
        pj, factory.get(), PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
    // Which files happen to be installed must not change what is chosen.
    proj_operation_factory_context_set_grid_availability_use(pj, factory.get(),
                                                             PROJ_GRID_AVAILABILITY_IGNORED);
    // Grids under the registry's names and methods, not those of PROJ's own files.
    proj_operation_factory_context_set_use_proj_alternative_grid_names(pj, factory.get(), 0);
    proj_operation_factory_context_set_allow_ballpark_transformations(pj, factory.get(), 0);
    if (joining == Joining::none)
      proj_operation_factory_context_set_allow_use_intermediate_crs(
          pj, factory.get(), PROJ_INTERMEDIATE_CRS_USE_NEVER);
    const Owned<PJ_OBJ_LIST> list(
        proj_create_operations(pj, source.get(), target.get(), factory.get()));
    std::vector<RegisteredOperation> found;
    for (int i = 0; list && i < proj_list_get_count(list.get()); ++i) {
      const Owned<PJ> operation(proj_list_get(pj, list.get(), i));
      found.push_back(Describe(operation.get()));
    }
    return found;
  }

  // What has been read: systems and files by their codes, operations by what was asked.
  using Question = std::tuple<std::string, std::string, double, double, double, double, Joining>;
  std::unordered_map<std::string, RegisteredCrs> systems;
  std::unordered_map<std::string, std::optional<ProjGrid>> grids;
  std::map<Question, std::vector<RegisteredOperation>> operations;

  // References are good as long as a registry lives: a context forgets between two.
  void ForgetWhatGrows() {
    constexpr std::size_t kMostSystems = 200, kMostQuestions = 50;  // some KB, some tens of KB
    if (systems.size() > kMostSystems) systems.clear();
    if (operations.size() > kMostQuestions) operations.clear();
  }

 private:
  std::string OnDatum(const std::string& code) const {
    const Owned<PJ_OBJ_LIST> list(proj_query_geodetic_crs_from_datum(
        pj, kAuthority, kAuthority, code.c_str(), "geographic 2D"));
    for (int i = 0; list && i < proj_list_get_count(list.get()); ++i) {
      const Owned<PJ> system(proj_list_get(pj, list.get(), i));
      if (!proj_is_deprecated(system.get())) return CodeOf(system.get());
    }
    return "";
  }
  // By its datum's name and its ellipsoid.
  std::string Identified(const PJ* geodetic) const {
    constexpr int kSameButForNames = 70;  // percent, as PROJ counts
    int* confidence = nullptr;
    const Owned<PJ_OBJ_LIST> list(proj_identify(pj, geodetic, kAuthority, nullptr, &confidence));
    std::string code;
    if (list && proj_list_get_count(list.get()) > 0 && confidence[0] >= kSameButForNames)
      if (const Owned<PJ> best(proj_list_get(pj, list.get(), 0)); !proj_is_deprecated(best.get()))
        code = proj_get_type(best.get()) == PJ_TYPE_GEOGRAPHIC_2D_CRS ? CodeOf(best.get())
                                                                      : GeographicCode(best.get());
    proj_int_list_destroy(confidence);
    return code;
  }
};

// Contexts that are not in use, with their open database and what they have read of it: a new one takes
// ten times as long for its first operation as one that has made some. Each serves one registry at a
// time, whose thread it need not have been made on.
class EpsgRegistry::ContextPool {
 public:
  // Never destroyed: registries may outlive what is static.
  static ContextPool& Instance() {
    static ContextPool& pool = *new ContextPool;
    return pool;
  }

  std::unique_ptr<Context> Take() {
    const std::lock_guard lock(mutex_);
    if (idle_.empty()) return std::make_unique<Context>();
    std::unique_ptr<Context> context = std::move(idle_.back());
    idle_.pop_back();
    return context;
  }

  void Give(std::unique_ptr<Context> context) {
    context->ForgetWhatGrows();
    const std::lock_guard lock(mutex_);
    if (idle_.size() < kMostIdle) idle_.push_back(std::move(context));
  }

 private:
  static constexpr std::size_t kMostIdle = 8;  // some MB each
  std::mutex mutex_;
  std::vector<std::unique_ptr<Context>> idle_;
};

EpsgRegistry::EpsgRegistry() : context_(ContextPool::Instance().Take()) {
  if (!context_->tables && !proj_context_get_database_path(context_->pj))
    throw UserError("the EPSG registry is not found: PROJ has no database proj.db here");
}

EpsgRegistry::~EpsgRegistry() { ContextPool::Instance().Give(std::move(context_)); }

std::string EpsgRegistry::Version() const {
  const char* version = proj_context_get_database_metadata(context_->pj, "EPSG.VERSION");
  return fmt::format("EPSG {}", version ? version : "of unknown version");
}

const RegisteredCrs& EpsgRegistry::Crs(const std::string& code) const {
  const auto known = context_->systems.find(code);
  if (known != context_->systems.end()) return known->second;
  if (auto told = context_->tables ? context_->tables->Crs(code) : std::nullopt)
    return context_->systems.emplace(code, std::move(*told)).first->second;
  const Owned<PJ> crs = context_->Find(code);
  if (!crs)
    throw UserError(fmt::format("EPSG:{}: no coordinate reference system of the registry ({}){}",
                                Printable(code), Version(), context_->SimilarTo(code)));
  return context_->systems.emplace(code, context_->DescribeRegistered(crs.get(), code))
      .first->second;
}

RegisteredCrs EpsgRegistry::CrsOfText(const std::string& text, const std::string& name) const {
  const Owned<PJ> crs(proj_create(context_->pj, text.c_str()));
  if (!crs || !proj_is_crs(crs.get()))
    throw UserError(name + ": is no coordinate reference system that PROJ can read");
  return context_->Describe(crs.get(), CodeOf(crs.get()));
}

std::string EpsgRegistry::Write(const std::string& definition, SystemNotation notation) const {
  PJ_CONTEXT* pj = context_->pj;
  const Owned<PJ> crs(proj_create(pj, definition.c_str()));
  const char* const lines[] = {"MULTILINE=YES", nullptr};
  const char* text = nullptr;
  if (crs && notation == SystemNotation::wkt)
    text = proj_as_wkt(pj, crs.get(), PJ_WKT2_2019, lines);
  else if (crs && notation == SystemNotation::projjson)
    text = proj_as_projjson(pj, crs.get(), lines);
  else if (crs)
    text = proj_as_proj_string(pj, crs.get(), PJ_PROJ_5, nullptr);
  if (!text)
    throw UserError(definition.substr(0, definition.find('[')) +
                    ": PROJ has no such notation of it");
  return text;
}

std::vector<ListedCrs> EpsgRegistry::ProjectedSystems() const {
  const CrsList list(context_->pj);
  std::vector<ListedCrs> systems;
  for (int i = 0; i < list.count; ++i) {
    const PROJ_CRS_INFO& row = *list.rows[i];
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

const std::vector<RegisteredOperation>& EpsgRegistry::Operations(const std::string& from,
                                                                 const std::string& to,
                                                                 const GeoBox& box,
                                                                 Joining joining) const {
  Context::Question question{from, to, box.west, box.south, box.east, box.north, joining};
  const auto known = context_->operations.find(question);
  if (known != context_->operations.end()) return known->second;
  auto told = context_->tables ? context_->tables->Operations(from, to, box) : std::nullopt;
  std::vector<RegisteredOperation> found =
      told ? std::move(*told) : context_->FindOperations(from, to, box, joining);
  for (RegisteredOperation& each : found) TakeSteps(each);
  return context_->operations.emplace(std::move(question), std::move(found)).first->second;
}

std::optional<RegisteredOperation> EpsgRegistry::Operation(const std::string& code,
                                                           bool turnedRound) const {
  Owned<PJ> operation = context_->FindOperation(code, false);
  if (operation && turnedRound)
    operation.reset(proj_coordoperation_create_inverse(context_->pj, operation.get()));
  if (!operation) return std::nullopt;
  RegisteredOperation found = context_->Describe(operation.get());
  TakeSteps(found);
  return found;
}

void EpsgRegistry::TakeSteps(RegisteredOperation& operation) const {
  operation.steps =
      std::make_shared<const std::vector<OperationStep>>(ReadSteps(*this, *operation.document));
}

const std::optional<ProjGrid>& EpsgRegistry::GridOfProj(const std::string& code) const {
  const auto known = context_->grids.find(code);
  if (known != context_->grids.end()) return known->second;
  return context_->grids
      .emplace(code, context_->tables ? context_->tables->Grid(code) : context_->FindGrid(code))
      .first->second;
}

std::vector<std::string> EpsgRegistry::ProjFolders() {
  const char* path = proj_info().searchpath;
  std::istringstream stream(path ? path : "");
  std::vector<std::string> folders;
  for (std::string folder; std::getline(stream, folder, ':');) folders.push_back(folder);
  return folders;
}

std::string EpsgRegistry::NameInProj(const std::string& name) const {
  const std::string address = context_->FileOfProj(name).address;
  return address.substr(address.rfind('/') + 1);
}

std::string EpsgRegistry::FindInProj(const std::string& name) const {
  return context_->FileOfProj(name).path;
}

}  // namespace geomath_files
