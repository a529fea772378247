#include "geomath/geoid/close_seam.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

constexpr int kRepeated =
    4;  // half of the widest stencil, and one: a turn begins half a step before

/// The number of columns of a whole turn, 0 when `NX` columns do not make one.
int Period(double lonStep, int NX) {
  constexpr double kRounding = 1e-6;  // steps
  const double around = kTwoPi / lonStep;
  if (!(std::abs(around - std::round(around)) <= kRounding)) return 0;
  if (!(around > kRepeated - 0.5 && around < NX + 0.5 && around > NX - 1.5)) return 0;
  return static_cast<int>(std::round(around));
}

}  // namespace

std::optional<ClosedGrid> CloseSeam(const TGridRgn& grid, int NX, int NY, const float* nodes) {
  const int period = Period(grid.lonStep, NX);
  if (period == 0 || NY < 1) return std::nullopt;
  ClosedGrid closed{grid, period + 2 * kRepeated, NY, kRepeated, {}};
  closed.grid.L0 -= kRepeated * grid.lonStep;
  closed.grid.dL = (closed.NX - 1) * grid.lonStep;
  closed.nodes.reserve(static_cast<std::size_t>(NY) * static_cast<std::size_t>(closed.NX));
  for (int r = 0; r < NY; ++r) {
    const float* row = nodes + static_cast<std::ptrdiff_t>(r) * NX;
    closed.nodes.insert(closed.nodes.end(), row + period - kRepeated, row + period);
    closed.nodes.insert(closed.nodes.end(), row, row + period);
    closed.nodes.insert(closed.nodes.end(), row, row + kRepeated);
  }
  return closed;
}

}  // namespace zel_cs::geomath
