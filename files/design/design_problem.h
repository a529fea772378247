#pragma once

#include <string>

#include "geomath/design/zone_design.h"

namespace geomath_files {

/// Why there is no zone, in words that follow the name of the ground.
std::string DesignProblem(zel_cs::geomath::DesignStatus status);

}  // namespace geomath_files
