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

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

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

/// A position as the queries of a grid take it.
TAbstractPoint3<double> OnGrid(const TRectRgn& grid, double b, double l) {
  const double turned = InTurnAround(grid.L0 + grid.dL / 2, l);
  return {OntoEdge(b, grid.B0), OntoEdge(turned, grid.L0), 0};
}

void DropMissing(double* heights, std::size_t count) {
  std::replace_if(
      heights, heights + count, [](double height) { return !IsHeight(height); }, kNone);
}

/// Points of a query, so many at a time.
struct Chunk {
  static constexpr std::size_t kSize = 256;
  std::size_t first = 0, size = 0;
  TAbstractPoint3<double> points[kSize];

  explicit Chunk(std::size_t count) : count_(count) {}
  bool Next() {
    first += size;
    size = std::min(kSize, count_ - first);
    return size > 0;
  }

 private:
  std::size_t count_;
};

}  // namespace

// The slot starts at zero: one scheme adds to what it holds.
bool RegionalGeoidHeight::Height(double b, double l, double& height) const {
  const TAbstractPoint3<double> point = OnGrid(model_->GetRegion(false), b, l);
  double found = 0;
  if (model_->CountHeight(&point, &found, 1) != 0 || !IsHeight(found)) return false;
  height = found;
  return true;
}

// A scheme that fails ends its query, which is told apart from missing heights only for single points:
// where one height is missing, each is asked for by itself.
void RegionalGeoidHeight::Heights(const double* b, const double* l, double* heights,
                                  std::size_t count) const {
  const TRectRgn grid = model_->GetRegion(false);
  for (Chunk chunk(count); chunk.Next();) {
    const double *const latitudes = b + chunk.first, *const longitudes = l + chunk.first;
    double* const found = heights + chunk.first;
    for (std::size_t i = 0; i < chunk.size; ++i)
      chunk.points[i] = OnGrid(grid, latitudes[i], longitudes[i]);
    std::fill_n(found, chunk.size, 0.0);
    if (model_->CountHeight(chunk.points, found, static_cast<int>(chunk.size)) == 0)
      DropMissing(found, chunk.size);
    else
      GeoidHeight::Heights(latitudes, longitudes, found, chunk.size);
  }
}

void RegionalGeoidHeight::HeightsAndSlopes(const double* b, const double* l, double* heights,
                                           double* perLatitude, double* perLongitude,
                                           std::size_t count) const {
  const TRectRgn grid = model_->GetRegion(false);
  for (Chunk chunk(count); chunk.Next();) {
    const std::size_t first = chunk.first;
    for (std::size_t i = 0; i < chunk.size; ++i)
      chunk.points[i] = OnGrid(grid, b[first + i], l[first + i]);
    std::fill_n(heights + first, chunk.size, 0.0);
    if (!model_->CountSlopes(chunk.points, heights + first, perLatitude + first,
                             perLongitude + first, static_cast<int>(chunk.size)))
      GeoidHeight::HeightsAndSlopes(b + first, l + first, heights + first, perLatitude + first,
                                    perLongitude + first, chunk.size);
  }
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
  for (Chunk chunk(count); chunk.Next();) {
    double* const found = heights + chunk.first;
    for (std::size_t i = 0; i < chunk.size; ++i)
      chunk.points[i] = TAbstractPoint3<double>(b[chunk.first + i], l[chunk.first + i], 0);
    const int n = static_cast<int>(chunk.size);
    if (model_->CountHeight(chunk.points, found, n, ScratchOfThread()) != 0)
      std::fill_n(found, chunk.size, kNone);
    else
      DropMissing(found, chunk.size);
  }
}

// Three positions on the point's own latitude, and one on another: what costs are the latitudes.
void GlobalGeoidHeight::HeightsAndSlopes(const double* b, const double* l, double* heights,
                                         double* perLatitude, double* perLongitude,
                                         std::size_t count) const {
  constexpr std::size_t kPoints = 64;
  // Radians. Heights are computed to 1e-10 m; one step to a side leaves half of it times the curvature
  // of the geoid, 1e4 m for models of degree 2190: 1e-10 of a slope of 1, as its rounding does.
  constexpr double kAlong = 1e-6, kAcross = 2e-7;
  double latitudes[4 * kPoints], longitudes[4 * kPoints], found[4 * kPoints];
  for (std::size_t first = 0; first < count; first += kPoints) {
    const std::size_t n = std::min(kPoints, count - first);
    for (std::size_t i = 0; i < n; ++i) {
      const double B = b[first + i], L = l[first + i];
      std::fill_n(latitudes + 4 * i, 3, B);
      latitudes[4 * i + 3] = B - std::copysign(kAcross, B);
      longitudes[4 * i] = L - kAlong;
      longitudes[4 * i + 1] = longitudes[4 * i + 3] = L;
      longitudes[4 * i + 2] = L + kAlong;
    }
    Heights(latitudes, longitudes, found, 4 * n);
    for (std::size_t i = 0; i < n; ++i) {
      const double *const N = found + 4 * i, *const B = latitudes + 4 * i;
      const double* const L = longitudes + 4 * i;
      heights[first + i] = N[1];
      perLatitude[first + i] = (N[3] - N[1]) / (B[3] - B[1]);
      perLongitude[first + i] = (N[2] - N[0]) / (L[2] - L[0]);
    }
  }
}

}  // namespace zel_cs::geomath
