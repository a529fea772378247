#pragma once

#include <string>
#include <vector>

#include "files/points/point_sink.h"

namespace geomath_files::program {

inline constexpr double kGonPerDegree = 10.0 / 9;

/// The columns of a latitude and a longitude, in degrees, "dms" or "gon", with figures that show at
/// least what `decimals` of a metre show.
std::vector<ResultColumn> PositionColumns(const std::string& angles, int decimals);

}  // namespace geomath_files::program
