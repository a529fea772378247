#pragma once

#include <cmath>

namespace zel_cs::geomath {

/// Rotation of a (north, east) pair by θ: N' = cos θ·N − sin θ·E, E' = sin θ·N + cos θ·E.
struct PlaneRotation {
  struct Pair {
    double n, e;
  };

  explicit PlaneRotation(double theta) : cos(std::cos(theta)), sin(std::sin(theta)) {}

  Pair Turn(double n, double e) const { return {cos * n - sin * e, sin * n + cos * e}; }
  Pair TurnBack(double n, double e) const { return {cos * n + sin * e, cos * e - sin * n}; }

  double cos, sin;
};

}  // namespace zel_cs::geomath
