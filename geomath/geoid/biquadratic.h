#pragma once

#include <optional>

#include "geomath/base/grid_rgn.h"
#include "geomath/geoid/geoid_status.h"
#include "geomath/geoid/grid_nodes.h"

namespace zel_cs::geomath {

/// The middle node of a 3 × 3 stencil along one axis: the one nearest to position x (in steps),
/// moved inwards from the first and the last.
inline NodeIndex MiddleNode(double x, int count) {
  const NodeIndex nearest = TruncIndex(x + 0.5);
  return nearest < 2 ? 1 : std::min(nearest, NodeIndex{count} - 2);
}

/// Biquadratic interpolation over the 3 × 3 nodes around the nearest one, kNoHeight when a row has
/// no value. rowValue(row, column, offset) gives the parabola along one row, counted from the
/// south, through the nodes around `column`; it is kept in single precision, as its result is.
template <class RowValue>
double Biquadratic(const TGridRgn& grid, int NY, int NX, const double* point, RowValue rowValue) {
  const double fromSouth = point[0] - grid.B0, fromWest = point[1] - grid.L0;
  const NodeIndex i = MiddleNode(fromSouth / grid.latStep, NY);
  const NodeIndex j = MiddleNode(fromWest / grid.lonStep, NX);
  const double dLat = fromSouth - static_cast<double>(i) * grid.latStep;
  const double dLon = fromWest - static_cast<double>(j) * grid.lonStep;
  float rows[3];
  for (NodeIndex k = 0; k < 3; ++k) {
    const std::optional<double> value = rowValue(i + k - 1, j, dLon);
    if (!value) return kNoHeight;
    rows[k] = static_cast<float>(*value);
  }
  return ThreePoint(grid.latStep, dLat, rows[0], rows[1], rows[2]);
}

/// The parabola through three nodes of one row, as Biquadratic wants it; no value when one of them
/// marks a hole.
inline std::optional<double> ParabolaOfRow(double lonStep, double offset, const float (&z)[3]) {
  constexpr float kHole = static_cast<float>(kNoHeight);
  if (z[0] == kHole || z[1] == kHole || z[2] == kHole) return std::nullopt;
  return ThreePoint(lonStep, offset, z[0], z[1], z[2]);
}

/// The same with its nodes from a row of floats.
inline std::optional<double> ParabolaOfRow(double lonStep, double offset, const GridNodes& nodes,
                                           NodeIndex row, NodeIndex column) {
  float z[3];
  if (!nodes.Read(row, column - 1, z)) return std::nullopt;
  return ParabolaOfRow(lonStep, offset, z);
}

}  // namespace zel_cs::geomath
