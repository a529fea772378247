#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath help [COMMAND]`: what the program or a command takes. See Command.
std::function<int()> PrepareHelp(CLI::App& arguments);

}  // namespace geomath_files::program
