#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "files/system/system_file.h"
#include "python/bindings/objects.h"

namespace geomath_python {

/// Which transformation to WGS 84 a system of the registry gets: the best over its area without one.
struct EpsgWish {
  bool datum = true;                                   ///< else positions of the system's own datum
  std::string operation = {};                          ///< EPSG code
  std::optional<std::pair<double, double>> near = {};  ///< latitude and longitude, degrees
  std::vector<std::string> grids = {};  ///< folders with grids, looked into before all others
  std::string fromFrame = {};           ///< that positions come in, instead of WGS 84
  std::string toFrame = {};             ///< that of the datum, instead of the usual one
};

/// The system of a code of the EPSG registry. Throws UserError, or the exception of Python for it.
std::unique_ptr<geomath_files::CoordinateSystem> SystemOfEpsg(int code, const EpsgWish& wish);

/// The projection of a system, which has one.
std::shared_ptr<ProjectionObject> ProjectionObjectOf(const geomath_files::CoordinateSystem& system);

}  // namespace geomath_python
