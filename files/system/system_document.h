#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "files/system/system_file.h"

namespace geomath_files {

/// ParseSystem from what is parsed already.
std::unique_ptr<CoordinateSystem> MakeSystem(const nlohmann::json& document,
                                             const std::string& name,
                                             ProjectionNeed need = ProjectionNeed::required);

}  // namespace geomath_files
