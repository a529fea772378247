#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace geomath_files::program {

/// `geomath calibrate`: a site calibration from control points.
std::function<int()> PrepareCalibrate(CLI::App& arguments);

}  // namespace geomath_files::program
