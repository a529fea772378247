#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "geomath/base/batch_kernel.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// The points that `move` takes to those given, in place; `move`, a callable
/// (double* const (&point)[3], ShiftStatus* status), moves all points a little. Every round changes a
/// point by what it misses and leaves that times the slope of the motion, 1e-4 and mostly much less. A
/// point is found when a round changed no coordinate by more than its tolerance (or its rounding), and is then left
/// alone: no result depends on a point's neighbours. Motions that jump may have no such point.
template <class Move>
void SearchBack(double* const (&point)[3], std::size_t count, ShiftStatus* status,
                const double (&tolerance)[3], Move move) {
  constexpr int kMaxRounds = 20;
  constexpr double kRoundings = 4 * std::numeric_limits<double>::epsilon();
  double given[3][kBatchBlock], moved[3][kBatchBlock];
  double* const columns[3] = {moved[0], moved[1], moved[2]};
  bool found[kBatchBlock] = {};
  for (std::size_t c = 0; c < 3; ++c) std::copy_n(point[c], count, given[c]);
  std::size_t open = count;
  for (int round = 0; round < kMaxRounds && open > 0; ++round) {
    ShiftStatus became[kBatchBlock] = {};
    for (std::size_t c = 0; c < 3; ++c) std::copy_n(point[c], count, moved[c]);
    move(columns, became);
    for (std::size_t i = 0; i < count; ++i) {
      if (found[i]) continue;
      bool close = true;
      for (std::size_t c = 0; c < 3; ++c) {
        const double rest = given[c][i] - moved[c][i];
        point[c][i] += rest;
        const double rounding = kRoundings * std::abs(given[c][i]);
        close = close && std::abs(rest) <= std::max(tolerance[c], rounding);
      }
      if (!HasResult(became[i])) status[i] = became[i];
      found[i] = close || !HasResult(became[i]);
      open -= found[i];
    }
  }
  for (std::size_t i = 0; i < count; ++i)
    if (!found[i]) status[i] = ShiftStatus::notInvertible;
}

}  // namespace zel_cs::geomath
