#pragma once

#include <memory>
#include <string>

#include "files/epsg/epsg_system.h"
#include "files/system/system_file.h"

namespace geomath_files::program {

/// What --system says of itself.
inline constexpr const char* kSystemHelp =
    "JSON file that describes the coordinate system, - for standard input, or a code of the EPSG "
    "registry (EPSG:25832)";

/// Says on standard error what a system of the registry is and what its user should know.
void TellSystem(const EpsgSystem& system);

/// The text of the system that --system names: of a system file, or what "geomath system" writes for a
/// code of the registry, whose transformation is said on standard error. Throws UserError.
std::string GivenSystemText(const std::string& name);

/// The system of that text, which has a projection.
std::unique_ptr<CoordinateSystem> GivenSystem(const std::string& name);

}  // namespace geomath_files::program
