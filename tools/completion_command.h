#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath completion SHELL`: a script that completes commands and options. See Command.
std::function<int()> PrepareCompletion(CLI::App& arguments);

}  // namespace geomath_files::program
