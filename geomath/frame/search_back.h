#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "geomath/base/batch_kernel.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// The points that `move` takes to those given, in place; `move`, a callable
/// (double* const (&point)[3], const double* dates, std::size_t count, ShiftStatus* status), moves
/// points a little. Every round changes a point by what it misses and leaves that times the slope of
/// the motion, 1e-4 and mostly much less. A point is found when a round changed no coordinate by more
/// than its tolerance (or its rounding), and is then left alone: rounds go on with the others, and no
/// result depends on a point's neighbours. Motions that jump may have no such point. Points that are
/// `found` already stay as they are; null where none is.
template <class Move>
void SearchBack(double* const (&point)[3], const double* dates, std::size_t count,
                ShiftStatus* status, const double (&tolerance)[3], Move move,
                const bool* found = nullptr) {
  constexpr int kMaxRounds = 20;
  constexpr double kRoundings = 4 * std::numeric_limits<double>::epsilon();
  double given[3][kBatchBlock], moved[3][kBatchBlock], at[kBatchBlock];
  double* const columns[3] = {moved[0], moved[1], moved[2]};
  std::size_t open[kBatchBlock], left = 0;
  for (std::size_t i = 0; i < count; ++i)
    if (!found || !found[i]) open[left++] = i;
  for (std::size_t c = 0; c < 3; ++c) std::copy_n(point[c], count, given[c]);
  for (int round = 0; round < kMaxRounds && left > 0; ++round) {
    ShiftStatus became[kBatchBlock] = {};
    for (std::size_t k = 0; k < left; ++k) {
      for (std::size_t c = 0; c < 3; ++c) moved[c][k] = point[c][open[k]];
      at[k] = dates[open[k]];
    }
    move(columns, at, left, became);
    std::size_t still = 0;
    for (std::size_t k = 0; k < left; ++k) {
      const std::size_t i = open[k];
      bool close = true;
      for (std::size_t c = 0; c < 3; ++c) {
        const double rest = given[c][i] - moved[c][k];
        point[c][i] += rest;
        const double rounding = kRoundings * std::abs(given[c][i]);
        close = close && std::abs(rest) <= std::max(tolerance[c], rounding);
      }
      if (!HasResult(became[k]))
        status[i] = became[k];
      else if (!close)
        open[still++] = i;
    }
    left = still;
  }
  for (std::size_t k = 0; k < left; ++k) status[open[k]] = ShiftStatus::notInvertible;
}

}  // namespace zel_cs::geomath
