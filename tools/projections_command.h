#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath projections`: the names, kinds and parameters of the projections, as text or JSON.
std::function<int()> PrepareProjections(CLI::App& arguments);

}  // namespace geomath_files::program
