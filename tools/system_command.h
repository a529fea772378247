#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath system`: a system file from an EPSG code.
std::function<int()> PrepareSystem(CLI::App& arguments);

}  // namespace geomath_files::program
