#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>

#include "geomath/geoid/grid_kernels.h"

/// Finding and reading the nodes of a stored grid. Nothing here reads outside it, whatever the
/// numbers: a position that is not in the grid has no node.
namespace zel_cs::geomath {

/// Row and column numbers; wide enough for sums and products of any two ints.
using NodeIndex = std::int64_t;

/// Cuts to an integer. NaN and values far outside any grid become positions outside every grid.
inline NodeIndex TruncIndex(double x) {
  constexpr double kFar = 1e10;
  if (!(x > -kFar)) return static_cast<NodeIndex>(-kFar);
  return static_cast<NodeIndex>(std::min(x, kFar));
}

/// Rounds down, likewise.
inline NodeIndex FloorIndex(double x) { return TruncIndex(std::floor(x)); }

/// A row stride that cannot be had: no node can then be read.
inline constexpr int kNoStride = -1;

/// Bytes from row to row: `padding`, cut to an integer, and `count` values of `valueSize` bytes.
inline int RowStride(double padding, int count, int valueSize) {
  const double extra = std::trunc(padding), values = static_cast<double>(count) * valueSize;
  const bool fits = extra >= 0 && values >= 0 && extra + values < std::numeric_limits<int>::max();
  return fits ? static_cast<int>(extra + values) : kNoStride;
}

/// `rows` rows of `columns` values, `rowStride` bytes apart, each after `rowHeader` bytes.
class GridNodes {
 public:
  GridNodes(const void* data, int rowStride, int columns, int rows, int rowHeader = 0)
      : bytes_(static_cast<const unsigned char*>(data)),
        stride_(rowStride),
        columns_(columns),
        rows_(data && rowStride > 0 ? rows : 0),
        header_(rowHeader) {}

  /// Where the value of `size` bytes at a row and column, counted from 0 in storage order, stands;
  /// null outside the grid.
  const unsigned char* At(NodeIndex row, NodeIndex column, NodeIndex size) const {
    if (row < 0 || row >= rows_ || column < 0 || column >= columns_) return nullptr;
    const NodeIndex at = row * stride_ + header_ + column * size;
    return at + size <= rows_ * stride_ ? bytes_ + at : nullptr;
  }

  /// The value there; none outside the grid.
  template <class Value>
  std::optional<Value> Read(NodeIndex row, NodeIndex column) const {
    const unsigned char* stored = At(row, column, NodeIndex{sizeof(Value)});
    if (!stored) return std::nullopt;
    Value value;
    std::memcpy(&value, stored, sizeof value);
    return value;
  }

 private:
  const unsigned char* bytes_;
  NodeIndex stride_, columns_, rows_, header_;
};

/// The cell of a point: its first row and column and the position in it.
struct GridCell {
  NodeIndex i, j;
  double u, v;
};

/// The cell of position (x, y) in steps from the first node. A point on or past the last row or
/// column belongs to the last cell, with a fraction of 1 or more; one before the first has none.
inline std::optional<GridCell> CellAt(double x, double y, int NX, int NY) {
  NodeIndex i = FloorIndex(x), j = FloorIndex(y);
  if (i == NodeIndex{NY} - 1) i = NodeIndex{NY} - 2;
  if (j == NodeIndex{NX} - 1) j = NodeIndex{NX} - 2;
  if (i < 0 || i >= NY || j < 0 || j >= NX) return std::nullopt;
  return GridCell{i, j, x - static_cast<double>(i), y - static_cast<double>(j)};
}

/// The four corners of a cell, in the order of Bilinear; none when one of them is not in the grid.
inline std::optional<std::array<float, 4>> CellCorners(const GridNodes& nodes, NodeIndex i,
                                                       NodeIndex j) {
  const auto z00 = nodes.Read<float>(i, j), z01 = nodes.Read<float>(i, j + 1);
  const auto z10 = nodes.Read<float>(i + 1, j), z11 = nodes.Read<float>(i + 1, j + 1);
  if (!z00 || !z01 || !z10 || !z11) return std::nullopt;
  return std::array<float, 4>{*z00, *z01, *z10, *z11};
}

/// `start` and the weighted sum of the 4 × 4 nodes from (firstRow, firstColumn) on. node(row,
/// column) gives metres or none; none, or a node above `limit`, gives no sum.
template <class Node>
std::optional<double> WeightedSum4x4(double start, NodeIndex firstRow, NodeIndex firstColumn,
                                     const Weights4& rowWeights, const Weights4& columnWeights,
                                     double limit, Node node) {
  double sum = start;
  for (std::size_t r = 0; r < 4; ++r) {
    for (std::size_t c = 0; c < 4; ++c) {
      const std::optional<double> z =
          node(firstRow + static_cast<NodeIndex>(r), firstColumn + static_cast<NodeIndex>(c));
      if (!z || *z > limit) return std::nullopt;
      sum += *z * rowWeights[r] * columnWeights[c];
    }
  }
  return sum;
}

}  // namespace zel_cs::geomath
