#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "files/epsg/system_notation.h"
#include "files/system/geo_box.h"

namespace geomath_files {

/// A coordinate reference system as the registry has it.
struct RegisteredCrs {
  std::string code, name;
  nlohmann::json document;  ///< PROJJSON
  GeoBox area;              ///< of use
  bool deprecated = false;
  std::vector<std::string> successors;  ///< codes, of a deprecated one
  std::string horizontal, vertical;     ///< codes, of the parts of a compound one
  std::string geographic;  ///< code, of the system of latitude and longitude on its datum
};

/// A line of the registry's list of systems.
struct ListedCrs {
  std::string code, name, areaName;
  GeoBox area;  ///< of use
};

struct OperationStep;

/// A transformation between two systems as the registry has it.
struct RegisteredOperation {
  std::string code;  ///< "1314"; empty for one that is put together from several
  std::string name;
  double accuracy = -1;  ///< metres; −1 unknown
  std::shared_ptr<const nlohmann::json>
      document;  ///< PROJJSON; null for what is not of the registry
  std::shared_ptr<const std::vector<OperationStep>> steps;  ///< of the document, by ReadSteps
  GeoBox area;                                              ///< of use
  std::string areaName;
};

/// A file in which PROJ has the grid of a transformation.
struct ProjGrid {
  std::string name;      ///< "fr_ign_ntf_r93.tif"
  bool inverse = false;  ///< leads the other way than the registry's transformation
};

/// Whether transformations may be put together from several where there is no direct one.
enum class Joining { none, allowed };

/// The EPSG registry in the database of PROJ. Nothing is fetched from a network. References that its
/// functions return are good as long as it lives; it serves one thread at a time.
class EpsgRegistry {
 public:
  /// Throws UserError when PROJ does not find its database.
  EpsgRegistry();
  ~EpsgRegistry();

  /// "EPSG v10.076".
  std::string Version() const;
  /// Throws UserError for a code that is none of a coordinate reference system.
  const RegisteredCrs& Crs(const std::string& code) const;
  /// The system of a text of WKT or PROJJSON, which need not be one of the registry. Throws UserError,
  /// which begins with `name`.
  RegisteredCrs CrsOfText(const std::string& text, const std::string& name) const;
  /// A system of a code ("EPSG:31467", "EPSG:25832+7837") or of a text in another notation than a
  /// system file. Throws UserError where it has none.
  std::string Write(const std::string& definition, SystemNotation notation) const;
  /// All projected systems that are not deprecated.
  std::vector<ListedCrs> ProjectedSystems() const;
  /// What leads from a system to another somewhere in the box, superseded and deprecated
  /// transformations left out, in PROJ's order of preference. A system is a code; "4258+7837" is one
  /// with a system of heights beside it, "4258+h" one with heights above its ellipsoid.
  const std::vector<RegisteredOperation>& Operations(const std::string& source,
                                                     const std::string& target, const GeoBox& box,
                                                     Joining joining = Joining::allowed) const;
  /// The transformation of a code, as it is published or turned round; nothing for a code that is
  /// none of one.
  std::optional<RegisteredOperation> Operation(const std::string& code,
                                               bool turnedRound = false) const;
  /// PROJ's own file for the transformation of a code; nothing where it has none.
  const std::optional<ProjGrid>& GridOfProj(const std::string& code) const;
  /// The folders in which PROJ looks for its files.
  static std::vector<std::string> ProjFolders();
  /// The name that a file has in the collection of PROJ, there or not; empty for one that is not in it.
  std::string NameInProj(const std::string& name) const;
  /// Where PROJ has a file, perhaps under the name of an earlier version; empty when it is not there.
  std::string FindInProj(const std::string& name) const;

 private:
  struct Context;
  class ContextPool;
  void TakeSteps(RegisteredOperation& operation) const;

  std::unique_ptr<Context> context_;
};

}  // namespace geomath_files
