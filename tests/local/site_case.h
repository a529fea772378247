#pragma once

#include <vector>

#include "geomath/base/ellipsoid.h"
#include "geomath/local/localization_param.h"
#include "geomath/proj/methods/double_ster_proj.h"
#include "tests/support/site_points.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {

/// Control points with the pointers that the solver takes.
class ControlPoints {
 public:
  explicit ControlPoints(std::vector<IdenticalPoint> points) : points_(std::move(points)) {
    for (IdenticalPoint& p : points_) pointers_.push_back(&p);
  }
  ControlPoints(const ControlPoints&) = delete;

  IdenticalPoint** Pointers() { return pointers_.data(); }
  int Count() const { return static_cast<int>(points_.size()); }
  IdenticalPoint& operator[](std::size_t i) { return points_[i]; }
  auto begin() { return points_.begin(); }
  auto end() { return points_.end(); }

 private:
  std::vector<IdenticalPoint> points_;
  std::vector<IdenticalPoint*> pointers_;
};

/// A point with all components.
inline IdenticalPoint PointOf(double gN, double gE, double gH, double lN, double lE, double lH,
                              int use) {
  IdenticalPoint p;
  p.globalN = gN;
  p.globalE = gE;
  p.globalH = gH;
  p.localN = lN;
  p.localE = lE;
  p.localH = lH;
  p.use = use;
  p.globalFlags = p.localFlags = kHasNorth | kHasEast | kHasHeight;
  return p;
}

inline std::vector<IdenticalPoint> SitePoints(const site::Configuration& configuration) {
  std::vector<IdenticalPoint> points;
  for (const site::Point& p : site::kControl) {
    const double n = configuration.baseGrid ? p.baseN : p.latDeg * tolerance::kDegree;
    const double e = configuration.baseGrid ? p.baseE : p.lonDeg * tolerance::kDegree;
    points.push_back(PointOf(n, e, p.h, p.localN, p.localE, p.localH, PointUseBoth));
  }
  return points;
}

/// The grid of the Netherlands: Bessel 1841, centre 52°09'22.178" N 5°23'15.500" E.
inline TDoubleSter NetherlandsGrid() {
  const auto degrees = [](double d, double m, double s) {
    return (d + m / 60 + s / 3600) * tolerance::kDegree;
  };
  return {6377397.155, 299.1528128, degrees(52, 9, 22.178), degrees(5, 23, 15.5), 0.9999079,
          155000,      463000};
}

/// A grid far from its origin, local coordinates with errors of centimetres. The tests hold what
/// mpmath (40 digits) makes of these figures.
inline std::vector<IdenticalPoint> NoisyPoints() {
  return {
      PointOf(5200000, 400000, 112.668, 4749528.792, 2158748.756, 65.19, PointUseBoth),
      PointOf(5200900, 400150, 115.598, 4750322.936, 2159198.357, 68.13, PointUseBoth),
      PointOf(5200250, 401200, 92.625, 4749352.063, 2159961.919, 45.126, PointUseBoth),
      PointOf(5199300, 400700, 147.88, 4748631.009, 2159166.339, 100.355, PointUseHorizontal),
      PointOf(5199800, 399100, 133.92, 4749649.569, 2157834.478, 86.388, PointUseBoth),
      PointOf(5200600, 399500, 93.261, 4750264.052, 2158484.723, 45.776, PointUseVertical),
      PointOf(5201300, 400900, 100.098, 4750441.54, 2160040.187, 52.624, PointUseRotation),
      PointOf(5199100, 399900, 130.712, 4748717.413, 2158346.041, 83.172, PointUseRotation),
  };
}

}  // namespace zel_cs::geomath
