#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath info`: what a system is, or the layers of a file. See Command.
std::function<int()> PrepareInfo(CLI::App& arguments);

}  // namespace geomath_files::program
