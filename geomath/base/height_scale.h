#pragma once

namespace zel_cs::geomath {

/// How much longer a line is at height `h` (metres) than on the sphere of the mean Earth.
constexpr double HeightScale(double h) {
  constexpr double kMeanEarthRadius = 6371000.0;  // metres
  return 1 + h / kMeanEarthRadius;
}

}  // namespace zel_cs::geomath
