#include "geomath/design/zone_design.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/design/axis_search.h"
#include "geomath/design/design_points.h"
#include "geomath/design/zone_rounding.h"

namespace zel_cs::geomath {
namespace {

FamilyDesign DesignFamily(const GroundPoints& ground, ZoneFamily family,
                          const DesignOptions& options, DesignWatch& watch) {
  AxisSearch search(ground, family, options.criterion, watch);
  FamilyDesign design{};
  const ZoneFit exact = search.Find();
  design.exact = exact.zone;
  design.value = exact.value;
  if (!std::isfinite(exact.value) || watch.Stopped()) return design;
  design.centredValue = search.Centred(exact.zone).value;
  const ZoneFit rounded = RoundZone(ground, exact.zone, options, watch);
  design.rounded = rounded.zone;
  design.roundedValue = rounded.value;
  SetFalseOrigin(ground, options, design.rounded);
  for (ZoneDefinition* zone : {&design.exact, &design.rounded})
    zone->lon0 = std::remainder(zone->lon0, 2 * kPi);
  return design;
}

}  // namespace

ZoneDesign DesignZone(const HeightPoints& points, const DesignOptions& options) {
  constexpr int kSteps = 80;  // of a family, about
  ZoneDesign design;
  DesignPoints examined = ExaminePoints(points, options);
  const std::vector<ZoneFamily> families = FamiliesFor(examined, options);
  design.status = examined.status;
  design.used = examined.ground.Size();
  if (design.status != DesignStatus::done) return design;
  DesignWatch watch(options.progress);
  const double share = 1.0 / static_cast<double>(families.size());
  double done = 0;
  for (const ZoneFamily family : families) {
    watch.Stage(done, done + share, kSteps);
    done += share;
    const FamilyDesign found = DesignFamily(examined.ground, family, options, watch);
    if (watch.Stopped()) {
      design.status = DesignStatus::stopped;
      design.families.clear();
      return design;
    }
    if (std::isfinite(found.value)) design.families.push_back(found);
  }
  if (design.families.empty()) design.status = DesignStatus::impossible;
  std::stable_sort(design.families.begin(), design.families.end(),
                   [](const FamilyDesign& one, const FamilyDesign& other) {
                     return one.roundedValue < other.roundedValue;
                   });
  return design;
}

}  // namespace zel_cs::geomath
