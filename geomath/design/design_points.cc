#include "geomath/design/design_points.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kLargestLat = 89 * kRadPerDeg;  // towards the poles
constexpr double kLargestExtent = 2000e3;        // metres
constexpr double kOnePlace = 1;                  // metre

bool AreOptionsValid(const DesignOptions& options) {
  const double p = options.criterion.percentile;
  return options.ellipsoid.a > 0 && p > 0 && p <= 1 && options.angleStep > 0 &&
         options.angleStep < 0.1 && options.scaleDecimals >= 4 && options.scaleDecimals <= 9 &&
         !options.families.empty();
}

// The direction in which the longitudes lie.
double MeanLongitude(std::span<const double> l) {
  double x = 0, y = 0;
  for (const double each : l) {
    const auto [sine, cosine] = SinCos(each);
    x += cosine;
    y += sine;
  }
  return Atan2(y, x);
}

}  // namespace

DesignPoints ExaminePoints(const HeightPoints& points, const DesignOptions& options) {
  DesignPoints examined(options.ellipsoid);
  GroundPoints& ground = examined.ground;
  const std::size_t count = points.b.size();
  const bool equal = points.l.size() == count && points.h.size() == count &&
                     (points.weight.empty() || points.weight.size() == count);
  examined.status = DesignStatus::badValue;
  if (!equal || !AreOptionsValid(options)) return examined;
  const double l0 = MeanLongitude(points.l);
  if (count > 0 && std::isnan(l0)) return examined;
  double largestLat = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const double b = points.b[i], h = points.h[i];
    const double w = points.weight.empty() ? 1 : points.weight[i];
    if (!(std::abs(b) <= kHalfPi) || !(w >= 0) || !std::isfinite(w) || std::isinf(h) ||
        h < -options.ellipsoid.a / 2)
      return examined;
    if (std::isnan(h) || w == 0) continue;
    const double l = l0 + std::remainder(points.l[i] - l0, 2 * kPi);
    examined.acrossDateLine |= std::abs(l) > kPi;
    largestLat = std::max(largestLat, std::abs(b));
    ground.Add(b, l, h, w);
    examined.source.push_back(i);
  }
  examined.status = DesignStatus::noPoints;
  if (ground.Size() == 0) return examined;
  examined.status = DesignStatus::atPole;
  if (largestLat > kLargestLat) return examined;
  const double diagonal = GroundFrame(ground).Diagonal();
  examined.status = diagonal < kOnePlace        ? DesignStatus::onePlace
                    : diagonal > kLargestExtent ? DesignStatus::tooLarge
                                                : DesignStatus::done;
  return examined;
}

std::vector<ZoneFamily> FamiliesFor(DesignPoints& points, const DesignOptions& options) {
  std::vector<ZoneFamily> families;
  for (const ZoneFamily family : options.families) {
    const bool folds = family == ZoneFamily::transverseMercator || family == ZoneFamily::lambert;
    if (!points.acrossDateLine || folds) families.push_back(family);
  }
  if (families.empty() && points.status == DesignStatus::done)
    points.status = DesignStatus::acrossDateLine;
  return families;
}

}  // namespace zel_cs::geomath
