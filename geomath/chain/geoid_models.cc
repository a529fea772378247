#include "geomath/chain/geoid_models.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

GlobalGeoidScratch& ScratchOfThread() {
  thread_local GlobalGeoidScratch scratch;
  return scratch;
}

bool IsHeight(double height) { return std::isfinite(height) && height != kNoHeight; }

/// A longitude in the turn around `centre`; itself when it lies there.
double InTurnAround(double centre, double longitude) {
  return longitude - kTwoPi * std::round((longitude - centre) / kTwoPi);
}

/// The queries of a grid cut angles down to multiples of 1e-12 rad, which takes a position on the
/// southern or western edge off it. One within two such units of an edge becomes one that is cut down
/// to the first multiple on the grid.
double OntoEdge(double angle, double edge) {
  constexpr double kReach = 2e-12, kUnits = 1e12;
  constexpr double kRounding = 0.01;  // units: ten times that of an angle of a turn
  if (!(std::abs(angle - edge) <= kReach)) return angle;
  return (std::ceil(edge * kUnits + kRounding) + 0.5) / kUnits;
}

}  // namespace

// The slot starts at zero: one scheme adds to what it holds.
bool RegionalGeoidHeight::Height(double b, double l, double& height) const {
  const TRectRgn grid = model_->GetRegion(false);
  const double turned = InTurnAround(grid.L0 + grid.dL / 2, l);
  const TAbstractPoint3<double> point(OntoEdge(b, grid.B0), OntoEdge(turned, grid.L0), 0);
  double found = 0;
  if (model_->CountHeight(&point, &found, 1) != 0 || !IsHeight(found)) return false;
  height = found;
  return true;
}

bool GlobalGeoidHeight::Height(double b, double l, double& height) const {
  double found;
  Heights(&b, &l, &found, 1);
  if (!IsHeight(found)) return false;
  height = found;
  return true;
}

void GlobalGeoidHeight::Heights(const double* b, const double* l, double* heights,
                                std::size_t count) const {
  constexpr std::size_t kChunk = 256;
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  TAbstractPoint3<double> points[kChunk];
  for (std::size_t first = 0; first < count; first += kChunk) {
    const std::size_t n = std::min(kChunk, count - first);
    for (std::size_t i = 0; i < n; ++i)
      points[i] = TAbstractPoint3<double>(b[first + i], l[first + i], 0);
    double* chunk = heights + first;
    if (model_->CountHeight(points, chunk, static_cast<int>(n), ScratchOfThread()) != 0)
      std::fill_n(chunk, n, kNone);
    std::replace_if(
        chunk, chunk + n, [](double height) { return !IsHeight(height); }, kNone);
  }
}

}  // namespace zel_cs::geomath
