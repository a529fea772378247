#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_tools {

/// `geomath convert`: the points of a file from global to local coordinates, or back.
std::function<int()> PrepareConvert(CLI::App& arguments);

}  // namespace geomath_tools
