#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "files/epsg/projjson.h"
#include "geomath/base/ellipsoid.h"

namespace geomath_files {

/// A projected system of the registry in the terms of a system file.
struct EpsgProjection {
  nlohmann::ordered_json section;  ///< "projection"
  std::string axes;                ///< "grid" of "axes"; empty for north and east
  std::string method;              ///< "Transverse Mercator (EPSG method 9807)"
  LengthUnit unit;                 ///< of the registered coordinates
  /// That the projection is to stand on, and whether it differs from that of the geographic system.
  zel_cs::geomath::Ellipsoid ellipsoid;
  bool ownEllipsoid = false;
};

/// The projection of a projected system, PROJJSON, with longitudes counted from Greenwich. Throws
/// UserError, which begins with `title` and names the method, where no class of the library is it.
EpsgProjection ProjectionOf(const nlohmann::json& projected, const std::string& title);

}  // namespace geomath_files
