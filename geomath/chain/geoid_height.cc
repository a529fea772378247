#include "geomath/chain/geoid_height.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "geomath/base/batch_kernel.h"

namespace zel_cs::geomath {
namespace {

// The slopes of a geoid by symmetric differences over the four corners of a small
// square: two latitudes, on each of which a harmonic model gives the second height for a fraction.
// False where a point has none, which is NaN then.
bool DifferenceHeights(const GeoidHeight& geoid, const double* b, const double* l,
                       std::size_t count, double* perLatitude, double* perLongitude) {
  constexpr double kHalf = 1e-6;  // radians, 6 m; heights are computed to 1e-10 m
  double latitudes[4 * kBatchBlock], longitudes[4 * kBatchBlock], heights[4 * kBatchBlock];
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t k = 0; k < 4; ++k) {
      latitudes[4 * i + k] = b[i] + (k < 2 ? -kHalf : kHalf);
      longitudes[4 * i + k] = l[i] + (k % 2 == 0 ? -kHalf : kHalf);
    }
  geoid.Heights(latitudes, longitudes, heights, 4 * count);
  bool all = true;
  for (std::size_t i = 0; i < count; ++i) {
    const double *const N = heights + 4 * i, *const B = latitudes + 4 * i;
    const double* const L = longitudes + 4 * i;
    perLatitude[i] = (N[2] + N[3] - N[0] - N[1]) / (2 * (B[2] - B[0]));
    perLongitude[i] = (N[1] + N[3] - N[0] - N[2]) / (2 * (L[1] - L[0]));
    all &= std::isfinite(perLatitude[i] + perLongitude[i]);
  }
  return all;
}

}  // namespace

GeoidHeight::~GeoidHeight() = default;

void GeoidHeight::Heights(const double* b, const double* l, double* heights,
                          std::size_t count) const {
  for (std::size_t i = 0; i < count; ++i) {
    if (!Height(b[i], l[i], heights[i])) heights[i] = std::numeric_limits<double>::quiet_NaN();
  }
}

void GeoidHeight::HeightsAndSlopes(const double* b, const double* l, double* heights,
                                   double* perLatitude, double* perLongitude,
                                   std::size_t count) const {
  constexpr double kSide = 1e-6;  // radians
  constexpr double kSteps[][2] = {{1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
  Heights(b, l, heights, count);
  for (std::size_t first = 0; first < count; first += kBatchBlock)
    DifferenceHeights(*this, b + first, l + first, std::min(kBatchBlock, count - first),
                      perLatitude + first, perLongitude + first);
  for (std::size_t i = 0; i < count; ++i)
    if (!std::isfinite(perLatitude[i] + perLongitude[i]))
      (void)std::any_of(std::begin(kSteps), std::end(kSteps), [&](const auto& step) {
        const double besideB = b[i] + step[0] * kSide, besideL = l[i] + step[1] * kSide;
        return DifferenceHeights(*this, &besideB, &besideL, 1, perLatitude + i, perLongitude + i);
      });
}

}  // namespace zel_cs::geomath
