#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>

namespace geomath_files {

class EpsgRegistry;

/// A route that the publisher of a national system defines, and that is better than the files which
/// the registry names.
struct PublisherRoute {
  /// The projected system that it leads from, or the geographic one of all that it leads from.
  int system;
  const char* title;
  double accuracy;  ///< metres
  const char* file;
  int target;  ///< the geographic system of its positions
  /// What stands in a system file for it, JSON; "file" is put into the first of the "shifts".
  const char* sections;
  /// The projected system, and the ellipsoid, whose projection the shifts stand behind; 0 and null
  /// where it is that of the system itself.
  int projection;
  const char* ellipsoid;
};

std::span<const PublisherRoute> PublisherRoutes();

/// What stands in a system file for a route by that grid, and the projection where it is another than
/// that of the system itself. Throws UserError.
nlohmann::ordered_json RouteSections(const EpsgRegistry& registry, const PublisherRoute& route,
                                     const std::string& file);

/// A system file for the plane of a route that stands behind a projection, from positions on the datum of
/// its system. Throws UserError.
nlohmann::ordered_json PlaneOfRoute(const EpsgRegistry& registry, const PublisherRoute& route);

}  // namespace geomath_files
