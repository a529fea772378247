#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/system/geo_box.h"

namespace geomath_files {

/// A coordinate reference system as the registry has it.
struct RegisteredCrs {
  std::string code, name;
  nlohmann::json document;  ///< PROJJSON
  GeoBox area;              ///< of use
  bool deprecated = false;
  std::vector<std::string> successors;  ///< codes, of a deprecated one
  std::string horizontal;               ///< code, of the first part of a compound one
};

/// A line of the registry's list of systems.
struct ListedCrs {
  std::string code, name, areaName;
  GeoBox area;  ///< of use
};

/// A transformation between two geographic systems as the registry has it.
struct RegisteredOperation {
  std::string code;  ///< "1314"; empty for one that is put together from several
  std::string name;
  double accuracy = -1;     ///< metres; −1 unknown
  nlohmann::json document;  ///< PROJJSON
  GeoBox area;              ///< of use
  std::string areaName;
};

/// The EPSG registry in the database of PROJ. Nothing is fetched from a network.
class EpsgRegistry {
 public:
  /// Throws UserError when PROJ does not find its database.
  EpsgRegistry();
  ~EpsgRegistry();

  /// "EPSG v10.076".
  std::string Version() const;
  /// Throws UserError for a code that is none of a coordinate reference system.
  RegisteredCrs Crs(const std::string& code) const;
  /// All projected systems that are not deprecated.
  std::vector<ListedCrs> ProjectedSystems() const;
  /// What leads from a geographic system to WGS 84 somewhere in the box, superseded and deprecated
  /// transformations left out, in PROJ's order of preference.
  std::vector<RegisteredOperation> OperationsToWgs84(const std::string& code,
                                                     const GeoBox& box) const;

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

}  // namespace geomath_files
