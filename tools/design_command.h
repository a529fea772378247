#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath design`: a low-distortion zone for a terrain.
std::function<int()> PrepareDesign(CLI::App& arguments);

}  // namespace geomath_files::program
