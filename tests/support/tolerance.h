#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

/// Tolerances that several tests share: a name, a unit, a reason. Those of one test stand there.
namespace tolerance {

inline constexpr double kDegree = std::numbers::pi / 180;

// Two evaluations of one closed formula in doubles, coordinates up to 1e7 m: a few units in the
// last place of 1e7, which is 1.9e-9 m.
inline constexpr double kSameFormulaMetres = 1e-8;

// The promise of batch against scalar calls: of a coordinate in metres a nanometre or three units in
// the last place, whichever is larger.
inline constexpr double kBatchMetres = 1e-9;
inline constexpr double kBatchRadians = 1e-15;
inline double BatchMetres(double coordinate) {
  const double size = std::abs(coordinate);
  return std::max(kBatchMetres,
                  3 * (std::nextafter(size, std::numeric_limits<double>::infinity()) - size));
}

// Round trips of closed conformal formulas: 0.06 mm on the ground.
inline constexpr double kRoundTripRadians = 1e-11;

}  // namespace tolerance
