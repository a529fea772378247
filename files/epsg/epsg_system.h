#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "files/system/geo_box.h"

namespace geomath_files {

/// Which transformation to WGS 84, or to a frame that moves, a system gets.
struct DatumWish {
  bool none = false;                  ///< positions of the system's own datum
  std::string operation = {};         ///< EPSG code; empty for the best
  std::optional<Position> near = {};  ///< where it is to be good, instead of all the system's area
  std::vector<std::string> grids = {};  ///< folders with grids, looked into before all others
  std::string output = {};  ///< the system file, beside which grids are looked for; or empty
  /// The frame that positions come in, instead of WGS 84; empty for none.
  std::string fromFrame = {};
  std::string toFrame = {};         ///< that of the datum, instead of the usual one
  std::optional<double> date = {};  ///< of positions, decimal year
};

/// A system file, and what its reader should know.
struct EpsgSystem {
  nlohmann::ordered_json document;
  std::vector<std::string> notes;
};

/// The system of an EPSG code, projected or geographic. Throws UserError where the registry has no
/// such system, or where a system file cannot hold its projection or the transformation, or lacks
/// the file of the one that is wished for.
EpsgSystem MakeEpsgSystem(const std::string& code, const DatumWish& wish);

/// The projected systems of the registry whose name and area hold all of the words, in any letter
/// case, or whose area of use holds the place: as text, that of the smallest area first. Throws
/// UserError when there is none.
std::string FindEpsgSystems(const std::string& words, const std::optional<Position>& place);

/// The transformations from the system's datum to WGS 84 as text, best first, with the files of
/// grids: GridFolders says where they are looked for.
std::string ListEpsgOperations(const std::string& code, const DatumWish& wish);

}  // namespace geomath_files
