#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath factors`: scale, convergence and Tissot's ellipse at points.
std::function<int()> PrepareFactors(CLI::App& arguments);

}  // namespace geomath_files::program
