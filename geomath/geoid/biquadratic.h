#pragma once

#include <array>
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
  std::array<float, 3> rows;
  for (NodeIndex k = 0; k < 3; ++k) {
    const std::optional<double> value = rowValue(i + k - 1, j, dLon);
    if (!value) return kNoHeight;
    rows[static_cast<std::size_t>(k)] = static_cast<float>(*value);
  }
  return ThreePoint(grid.latStep, dLat, rows[0], rows[1], rows[2]);
}

/// The parabola through the three nodes around column j of one row, as Biquadratic wants it.
/// node(column) gives a float or none; none or a node that marks a hole gives no value.
template <class Node>
std::optional<double> ParabolaOfRow(double lonStep, double offset, NodeIndex j, Node node) {
  const std::optional<float> a = node(j - 1), b = node(j), c = node(j + 1);
  constexpr float kHole = static_cast<float>(kNoHeight);
  if (!a || !b || !c || *a == kHole || *b == kHole || *c == kHole) return std::nullopt;
  return ThreePoint(lonStep, offset, *a, *b, *c);
}

}  // namespace zel_cs::geomath
