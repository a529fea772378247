#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_tools {

/// `geomath system`: a system file from an EPSG code.
std::function<int()> PrepareSystem(CLI::App& arguments);

}  // namespace geomath_tools
