#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath measure`: lines between points, from the grid to the ground.
std::function<int()> PrepareMeasure(CLI::App& arguments);

}  // namespace geomath_files::program
