#pragma once

/// Where columns of points serve a plane: bounds beyond everything that is surveyed, within which no
/// square and no logarithm leaves the numbers.
namespace zel_cs::geomath {

/// Coordinates on a stereographic plane, metres.
inline constexpr double kLargestCoordinate = 1e50;

/// The square of a distance from the apex of a cone, square metres.
inline constexpr double kLargestSquaredRadius = 1e40;

}  // namespace zel_cs::geomath
