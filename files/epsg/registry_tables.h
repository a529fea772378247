#pragma once

#include <array>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "files/epsg/epsg_registry.h"
#include "files/epsg/sql_database.h"

namespace geomath_files {

/// A file of the collection of PROJ.
struct GridFile {
  std::array<std::string, 2> names;  ///< and before PROJ 7, or empty
  std::string address;               ///< or empty
};

/// The tables of the registry in the database of PROJ, which tell most things some ten times as fast as
/// PROJ makes, describes and looks up its objects. What they tell is what PROJ tells: where that takes
/// more than tables they tell nothing, and PROJ is asked. Documents have what is read of them.
class RegistryTables {
 public:
  /// Null where the file is no such database, or of another layout.
  static std::unique_ptr<RegistryTables> Open(const std::string& path);

  /// A system of a code; nothing for one that is deprecated, unknown or out of the ordinary.
  std::optional<RegisteredCrs> Crs(const std::string& code);
  /// What leads directly from one geographic system with two axes to another, without its steps, in PROJ's
  /// order of preference; nothing where there is nothing, or where a way over others may serve better.
  std::optional<std::vector<RegisteredOperation>> Operations(const std::string& source,
                                                             const std::string& target,
                                                             const GeoBox& box);
  /// PROJ's own file for the transformation of a code; null for one without grids.
  std::optional<ProjGrid> Grid(const std::string& code);
  /// Of one of its names; nothing for one that PROJ does not know.
  std::optional<GridFile> File(const std::string& name);

 private:
  friend class OperationTables;

  explicit RegistryTables(std::unique_ptr<SqlDatabase> database) : database_(std::move(database)) {}

  // Thrown by all below for what takes more than tables.
  struct Untold {};

  // A value in the unit of a code, degrees for one that writes minutes and seconds as figures.
  nlohmann::json Quantity(double value, int unit);
  nlohmann::json Parameter(int parameter, double value, int unit);
  const nlohmann::json& Unit(int code);
  const nlohmann::json* Geodetic(int code);  // null for none
  nlohmann::json MakeGeodetic(int code);
  const nlohmann::json& Axes(int coordinateSystem);
  nlohmann::json MakeAxes(int coordinateSystem);
  bool FindGeodetic(int code, RegisteredCrs& found);
  bool FindProjected(int code, RegisteredCrs& found);
  bool FindVertical(int code, RegisteredCrs& found);
  bool FindCompound(int code, RegisteredCrs& found);
  void FindArea(const char* table, RegisteredCrs& found);
  std::string GeographicOn(int code, const nlohmann::json& document);

  std::unique_ptr<SqlDatabase> database_;
  std::map<int, nlohmann::json> units_, geodetic_, axes_;
};

}  // namespace geomath_files
