#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "geomath/base/ellipsoid.h"
#include "geomath/design/zone_definition.h"

namespace zel_cs::geomath {

/// The points of a design as its computations read them: radians, and every point with a height and a
/// weight above 0.
struct GroundPoints {
  explicit GroundPoints(const Ellipsoid& figure) : ellipsoid(figure) {}

  Ellipsoid ellipsoid;
  std::vector<double> b, l;
  std::vector<double> h;
  std::vector<double> weight;
  /// R/(R + h) over the metres of a unit of latitude: by it the length of a derivative by latitude
  /// becomes a distortion factor.
  std::vector<double> unit;

  std::size_t Size() const { return b.size(); }
  void Add(double latitude, double longitude, double height, double w);
  /// Some of the points.
  GroundPoints Subset(std::span<const std::size_t> indices) const;
  /// About `count` of them, spread over their order.
  GroundPoints Thinned(std::size_t count) const;
  /// Of each of `cells`² cells of their extent the lowest and the highest point, and those farthest to
  /// the south, north, west and east.
  GroundPoints Extremes(std::size_t cells) const;

  /// The factors 1 + δ of a projection with scale 1. False where it fails for a point.
  bool Factors(const TGeoProj& projection, std::vector<double>& m) const;
};

/// Where points lie: offsets in metres from the middle of their extent, on its radii of curvature.
class GroundFrame {
 public:
  explicit GroundFrame(const GroundPoints& points);

  double MiddleLat() const { return b0_; }
  double MiddleLon() const { return l0_; }
  double North(double b) const { return (b - b0_) * perLat_; }
  double East(double l) const { return (l - l0_) * perLon_; }
  double Lat(double north) const { return b0_ + north / perLat_; }
  double Lon(double east) const { return l0_ + east / perLon_; }

  /// Of the extent, metres.
  double Diagonal() const { return diagonal_; }
  /// The largest height less the smallest.
  double Relief() const { return relief_; }

 private:
  double b0_ = 0, l0_ = 0, perLat_ = 1, perLon_ = 1, diagonal_ = 0, relief_ = 0;
};

}  // namespace zel_cs::geomath
