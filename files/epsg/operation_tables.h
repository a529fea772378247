#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "files/epsg/epsg_registry.h"
#include "files/epsg/registry_tables.h"
#include "files/system/geo_box.h"

namespace geomath_files {

/// The transformations of the registry between two of its geographic systems, by its tables.
class OperationTables {
 public:
  /// The tables stay alive as long as this.
  explicit OperationTables(RegistryTables& tables) : tables_(tables) {}

  /// Nothing where there is none, or where PROJ looks for ways over other systems as well. Throws
  /// RegistryTables::Untold for those of which the tables do not tell everything.
  std::optional<std::vector<RegisteredOperation>> Between(int source, int target,
                                                          const GeoBox& box);

 private:
  struct Row;

  std::vector<Row> Directly(int source, int target, bool inverse, const GeoBox& box);
  bool IsSuperseded(const Row& row, const std::vector<Row>& rows);
  void LookAtGrid(Row& row);
  void FindSteps(Row& row);
  nlohmann::json DocumentOf(const Row& row);
  void AddGrid(const Row& row, nlohmann::json& document);
  void AddHelmert(const Row& row, nlohmann::json& document);
  void AddOffsets(const Row& row, nlohmann::json& document);

  RegistryTables& tables_;
};

}  // namespace geomath_files
