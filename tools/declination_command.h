#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath declination`: the magnetic field at a point, at the points of a file or over a grid.
std::function<int()> PrepareDeclination(CLI::App& arguments);

}  // namespace geomath_files::program
