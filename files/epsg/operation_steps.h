#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "files/epsg/epsg_datum.h"
#include "files/epsg/epsg_registry.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/shift/coordinate_shift.h"

namespace geomath_files {

/// A file that has the grid of a step.
struct GridName {
  std::string name;
  bool inverse = false;  ///< leads the other way than the step is published
};

/// A step of a transformation.
struct OperationStep {
  std::string code;      ///< of the registry; empty where it has none
  std::string method;    ///< "NTv2"
  bool known = false;    ///< whether the library has the method
  bool inverse = false;  ///< published in the other direction
  bool dated = false;    ///< needs the date of the position
  zel_cs::geomath::ShiftSpace space = zel_cs::geomath::ShiftSpace::geographic;
  /// The entry of the list "shifts" of a system file without "file", "place" and "inverse".
  nlohmann::ordered_json entry = nlohmann::ordered_json::object();
  /// Files of which one is needed, that of the registry first; none for a formula.
  std::vector<GridName> grids;
  std::optional<RegisteredSimilarity> similarity;  ///< where it is one
  /// Those of the systems that it stands between.
  zel_cs::geomath::Ellipsoid source, target;
};

/// The steps of a transformation, PROJJSON, that move points, from its source to its target.
/// Longitudes count from Greenwich throughout, so that a change of prime meridian moves none.
std::vector<OperationStep> ReadSteps(const EpsgRegistry& registry, const nlohmann::json& document);

/// Whether a file of that name is in a format of grids that is read; the registry and PROJ name others
/// too.
bool IsReadableGrid(const std::string& name);

/// Whether positions on both are the same to 1 mm, as on GRS80 and WGS 84.
bool AreAlike(const zel_cs::geomath::Ellipsoid& a, const zel_cs::geomath::Ellipsoid& b);

}  // namespace geomath_files
