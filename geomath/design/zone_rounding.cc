#include "geomath/design/zone_rounding.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kFalseStep = 10e3;     // metres
constexpr double kLeastFalse = 10e3;    // metres that coordinates exceed
constexpr double kMostFalse = 10000e3;  // metres, where the search for a free range ends

// The multiples of a step about a value, or the nearest one where it is not searched for.
std::vector<double> Multiples(double value, double step, bool searched) {
  if (!searched) return {std::round(value / step) * step};
  return {std::floor(value / step) * step, std::ceil(value / step) * step};
}

// The zones with every angle rounded up and down that the family's axis depends on.
std::vector<ZoneDefinition> Roundings(const ZoneDefinition& exact, double step) {
  const ZoneFamily family = exact.family;
  std::vector<ZoneDefinition> zones;
  for (const double lat0 : Multiples(exact.lat0, step, family != ZoneFamily::transverseMercator))
    for (const double lon0 : Multiples(exact.lon0, step, family != ZoneFamily::lambert))
      for (const double azimuth :
           Multiples(exact.azimuth, step, family == ZoneFamily::obliqueMercator)) {
        ZoneDefinition zone = exact;
        zone.lat0 = lat0;
        zone.lon0 = lon0;
        zone.azimuth = azimuth;
        if (family == ZoneFamily::lambert && lat0 == 0) continue;  // no cone there
        zones.push_back(zone);
      }
  return zones;
}

struct Extent {
  double low = kInfinite, high = -kInfinite;

  void Include(double x) {
    low = std::min(low, x);
    high = std::max(high, x);
  }
  bool Overlaps(const Extent& other, double shift) const {
    return low + shift <= other.high && other.low <= high + shift;
  }
};

struct GridExtents {
  Extent north, east;
};

GridExtents ExtentsOf(const GroundPoints& points, const TGeoProj& projection) {
  GridExtents extents;
  std::vector<double> n = points.b, e = points.l;
  projection.ForwardBatch(n.data(), e.data(), n.size());
  for (std::size_t i = 0; i < n.size(); ++i) {
    if (!std::isfinite(n[i])) continue;
    extents.north.Include(n[i]);
    extents.east.Include(e[i]);
  }
  return extents;
}

// The least multiple of the step that keeps an extent positive and apart from others; when none does,
// the one that keeps it positive.
double FalseCoordinate(const Extent& extent, const std::vector<Extent>& others) {
  const double least = std::ceil((kLeastFalse - extent.low) / kFalseStep) * kFalseStep;
  for (double shift = least; extent.high + shift < kMostFalse; shift += kFalseStep)
    if (std::none_of(others.begin(), others.end(),
                     [&](const Extent& other) { return extent.Overlaps(other, shift); }))
      return shift + 0.0;  // no zero with a sign
  return least + 0.0;
}

}  // namespace

ZoneFit RoundZone(const GroundPoints& points, const ZoneDefinition& exact,
                  const DesignOptions& options, DesignWatch& watch) {
  ScaleFitter fitter(options.criterion);
  ZoneFit best{exact, kInfinite};
  std::vector<double> m;
  double unit = 1;
  for (int i = 0; i < options.scaleDecimals; ++i) unit *= 10;
  for (ZoneDefinition zone : Roundings(exact, options.angleStep)) {
    zone.scale = 1;
    if (!watch.Step()) break;
    if (!points.Factors(*zone.Projection(points.ellipsoid), m)) continue;
    const double scale = fitter.Best(m, points.weight).scale;
    for (const double units : {std::floor(scale * unit), std::ceil(scale * unit)}) {
      zone.scale = units / unit;
      const double value = fitter.Value(zone.scale, m, points.weight);
      if (value < best.value) best = {zone, value};
    }
  }
  return best;
}

void SetFalseOrigin(const GroundPoints& points, const DesignOptions& options,
                    ZoneDefinition& zone) {
  zone.fNorth = zone.fEast = 0;
  const GridExtents own = ExtentsOf(points, *zone.Projection(points.ellipsoid));
  std::vector<Extent> norths, easts;
  for (const TGeoProj* neighbour : options.neighbours) {
    const GridExtents other = ExtentsOf(points, *neighbour);
    norths.push_back(other.north);
    easts.push_back(other.east);
  }
  zone.fEast = FalseCoordinate(own.east, easts);
  norths.push_back({own.east.low + zone.fEast, own.east.high + zone.fEast});
  zone.fNorth = FalseCoordinate(own.north, norths);
}

}  // namespace zel_cs::geomath
