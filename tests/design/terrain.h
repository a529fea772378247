#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/design/linear_distortion.h"
#include "geomath/design/zone_definition.h"
#include "geomath/design/zone_design.h"

namespace zel_cs::geomath {

/// Height points on a lattice about a place.
struct Terrain {
  double b0 = 0, l0 = 0;  // the middle
  std::vector<double> b = {}, l = {}, h = {};

  HeightPoints Points() const { return {b, l, h, {}}; }
  std::vector<double> Distortions(const ZoneDefinition& zone, const Ellipsoid& ellipsoid) const {
    std::vector<double> delta(b.size());
    LinearDistortion(*zone.Projection(ellipsoid), b.data(), l.data(), h.data(), delta.data(),
                     b.size());
    return delta;
  }
};

/// Adds a point at metres north and east of the middle: so far along its meridian, and the same
/// distance east on every parallel.
inline void AddPoint(Terrain& terrain, double north, double east, double h,
                     const Ellipsoid& ellipsoid) {
  const double s = std::sin(terrain.b0), W2 = 1 - ellipsoid.e2 * s * s;
  const double rho = ellipsoid.a * (1 - ellipsoid.e2) / (W2 * std::sqrt(W2));
  const double b = terrain.b0 + north / rho, sinB = std::sin(b);
  const double nu = ellipsoid.a / std::sqrt(1 - ellipsoid.e2 * sinB * sinB);
  terrain.b.push_back(b);
  terrain.l.push_back(terrain.l0 + east / (nu * std::cos(b)));
  terrain.h.push_back(h);
}

/// Heights as a function of metres north and east of the middle.
using HeightAt = std::function<double(double north, double east)>;

/// (2·`steps` + 1)² points within `half` metres north and east of a place, degrees.
inline Terrain LatticeAbout(double latDeg, double lonDeg, double halfNorth, double halfEast,
                            int steps, const Ellipsoid& ellipsoid, const HeightAt& height) {
  Terrain terrain{.b0 = latDeg * kRadPerDeg, .l0 = lonDeg * kRadPerDeg};
  for (int i = -steps; i <= steps; ++i)
    for (int j = -steps; j <= steps; ++j) {
      const double north = halfNorth * i / steps, east = halfEast * j / steps;
      AddPoint(terrain, north, east, height(north, east), ellipsoid);
    }
  return terrain;
}

/// Points on rings of equal areas around a place: no direction is preferred.
inline Terrain DiscAbout(double latDeg, double lonDeg, double radius, int rings,
                         const Ellipsoid& ellipsoid, const HeightAt& height) {
  constexpr int kRays = 48;
  Terrain terrain{.b0 = latDeg * kRadPerDeg, .l0 = lonDeg * kRadPerDeg};
  for (int i = 0; i < rings; ++i)
    for (int j = 0; j < kRays; ++j) {
      const double r = radius * std::sqrt((i + 0.5) / rings), at = 2 * kPi * j / kRays;
      const double north = r * std::cos(at), east = r * std::sin(at);
      AddPoint(terrain, north, east, height(north, east), ellipsoid);
    }
  return terrain;
}

/// Pseudo-random numbers in [−1, 1) (Steele, Lea and Flood 2014, SplitMix64).
class Noise {
 public:
  double Next() {
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-52 - 1;
  }

 private:
  std::uint64_t state_ = 1;
};

}  // namespace zel_cs::geomath
