#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath traverse`: coordinates from field angles and distances.
std::function<int()> PrepareTraverse(CLI::App& arguments);

}  // namespace geomath_files::program
