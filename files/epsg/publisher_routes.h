#pragma once

#include <span>

namespace geomath_files {

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

}  // namespace geomath_files
