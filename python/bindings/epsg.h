#pragma once

#include <memory>

#include "files/epsg/epsg_system.h"
#include "files/system/system_file.h"
#include "python/bindings/objects.h"

namespace geomath_python {

/// The system of a code of the EPSG registry. Throws UserError. Runs without the interpreter's lock.
std::unique_ptr<geomath_files::CoordinateSystem> SystemOfEpsg(int code,
                                                              const geomath_files::DatumWish& wish);

/// The projection of a system, which has one.
std::shared_ptr<ProjectionObject> ProjectionObjectOf(const geomath_files::CoordinateSystem& system);

}  // namespace geomath_python
