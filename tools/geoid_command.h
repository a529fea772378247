#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geoid`: geoid heights of points of a file, or as a grid, from a grid or a coefficient model.
std::function<int()> PrepareGeoid(CLI::App& arguments);

}  // namespace geomath_files::program
