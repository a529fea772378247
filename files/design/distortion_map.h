#pragma once

#include <optional>
#include <string>
#include <vector>

#include "files/design/ground.h"

namespace geomath_files {

/// The distortions of ground as SVG, north up: means of cells from blue (grid too short) to red (too long),
/// with the contour of the limit on either side.
std::string DistortionMap(const Ground& ground, const std::vector<double>& deltas,
                          std::optional<double> limit);

/// How much of the weight has which distortion, as SVG.
std::string DistortionHistogram(const Ground& ground, const std::vector<double>& deltas,
                                std::optional<double> limit);

}  // namespace geomath_files
