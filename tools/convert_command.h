#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath convert`: the points of a file from global to local coordinates, or back.
std::function<int()> PrepareConvert(CLI::App& arguments);

}  // namespace geomath_files::program
