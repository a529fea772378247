#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "geomath/base/batch.h"
#include "geomath/base/rect_bounds.h"
#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid/grid_kernel.h"
#include "geomath/geoid/grid/grid_location.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

/// Points whose heights are asked for, and what became of them.
struct GridQuery {
  const TAbstractPoint3<double>* points;
  double* heights;
  std::size_t count;
  RectBounds bounds;
  GridTally tally = {};
  int failure = 0;         // what ended the query
  GridSlopes slopes = {};  // as the heights, where they are asked for
  bool sloped = false;     // whether they were written
};

/// Runs points from `first` on one by one: `interpolate`, int (double* point, double& height), gives
/// a height or kNoHeight, and ends the query where it returns another number than 0. False then.
template <class Interpolate>
bool RunPoints(GridQuery& query, std::size_t first, std::size_t count, Interpolate interpolate) {
  for (std::size_t k = first; k < first + count; ++k) {
    const TAbstractPoint3<double>& given = query.points[k];
    double point[] = {given[0], given[1], given[2]}, &height = query.heights[k];
    if (Locate(query.bounds, point[0], point[1])) {
      query.failure = interpolate(point, height);
      if (query.failure != 0) return false;
    } else {
      ++query.tally.outside;
      height = kNoHeight;
    }
    if (IsInvalid(height)) {
      height = kNoHeight;
      ++query.tally.invalid;
    }
  }
  return true;
}

/// Runs `block`, bool (std::size_t first, std::size_t count, const double* lat, const double* lon),
/// over the query's points, kGridBlock at a time, until it returns false.
template <class Block>
void RunBlocks(const GridQuery& query, Block block) {
  static_assert(sizeof *query.points == 3 * sizeof(double));
  double columns[3][kBatchBlock];
  for (std::size_t first = 0, n = 0; first < query.count; first += n) {
    n = std::min(kGridBlock, query.count - first);
    Separate(reinterpret_cast<const double*>(query.points + first), columns, n);
    if (!block(first, n, columns[0], columns[1])) return;
  }
}

/// Locates points in `bounds`; those outside become NaN.
inline void LocateBlock(const RectBounds& bounds, const double* lat, const double* lon,
                        std::size_t count, double* b, double* l) {
  for (std::size_t i = 0; i < count; ++i) {
    b[i] = lat[i];
    l[i] = lon[i];
    if (!Locate(bounds, b[i], l[i])) b[i] = l[i] = std::numeric_limits<double>::quiet_NaN();
  }
}

/// Takes over the heights of a block that a kernel has found, and leaves the other points of it, those
/// at kNoHeight, to `interpolate` as in RunPoints.
template <class Interpolate>
bool TakeHeights(GridQuery& query, std::size_t first, std::size_t count, const double* heights,
                 Interpolate interpolate) {
  for (std::size_t i = 0; i < count; ++i) {
    if (heights[i] != kNoHeight)
      query.heights[first + i] = heights[i];
    else if (!RunPoints(query, first + i, 1, interpolate))
      return false;
  }
  return true;
}

}  // namespace zel_cs::geomath
