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

/// Rounds down, likewise. Cutting and correcting is several times faster than a call of floor.
inline NodeIndex FloorIndex(double x) {
  const NodeIndex cut = TruncIndex(x);
  return cut - (static_cast<double>(cut) > x ? 1 : 0);
}

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

  /// Where `count` values of `size` bytes from a row and column on, counted from 0 in storage order,
  /// stand; null when one of them is outside the grid.
  const unsigned char* At(NodeIndex row, NodeIndex column, NodeIndex size,
                          NodeIndex count = 1) const {
    if (row < 0 || row >= rows_ || column < 0 || column + count > columns_) return nullptr;
    const NodeIndex at = row * stride_ + header_ + column * size;
    return at + count * size <= rows_ * stride_ ? bytes_ + at : nullptr;
  }

  /// Copies the values of one row from `column` on into `values`; false, nothing copied, when one of
  /// them is outside the grid.
  template <class Value, std::size_t N>
  bool Read(NodeIndex row, NodeIndex column, Value (&values)[N]) const {
    const unsigned char* stored = At(row, column, NodeIndex{sizeof(Value)}, NodeIndex{N});
    if (stored) std::memcpy(values, stored, sizeof values);
    return stored != nullptr;
  }

  /// The value at a row and column; none outside the grid.
  template <class Value>
  std::optional<Value> Read(NodeIndex row, NodeIndex column) const {
    Value value[1];
    return Read(row, column, value) ? std::optional(value[0]) : std::nullopt;
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

/// The corners of a cell, its southern (first) and its northern row; false when one of them is not in
/// the grid.
struct CellCorners {
  float low[2], high[2];

  bool Read(const GridNodes& nodes, const GridCell& cell) {
    return nodes.Read(cell.i, cell.j, low) && nodes.Read(cell.i + 1, cell.j, high);
  }
};

/// `start` and the weighted sum of 4 × 4 nodes. read(row, z) puts the stencil's four nodes of a row
/// into z, in metres, and says whether it could; if not, or with a node above `limit`, there is no
/// sum.
template <class Stored, class ReadRow>
std::optional<double> WeightedSum4x4(double start, NodeIndex firstRow, const Weights4& rowWeights,
                                     const Weights4& columnWeights, double limit, ReadRow read) {
  double sum = start;
  for (std::size_t r = 0; r < 4; ++r) {
    Stored z[4];
    if (!read(firstRow + static_cast<NodeIndex>(r), z)) return std::nullopt;
    for (std::size_t c = 0; c < 4; ++c) {
      if (z[c] > limit) return std::nullopt;
      sum += z[c] * rowWeights[r] * columnWeights[c];
    }
  }
  return sum;
}

}  // namespace zel_cs::geomath
