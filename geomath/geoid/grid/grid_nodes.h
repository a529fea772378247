#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>

#include "geomath/geoid/grid/grid_stencil.h"

/// Reading the nodes of a stored grid. Nothing here reads outside it, whatever the numbers: a
/// position that is not in the grid has no node.
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
inline NodeIndex FloorIndex(double x) { return TruncIndex(RoundDown(x)); }

/// A row stride that cannot be had: no node can then be read.
inline constexpr int kNoStride = -1;

/// Bytes from row to row: `padding`, cut to an integer, and `count` values of `valueSize` bytes.
inline int RowStride(double padding, int count, int valueSize) {
  const double extra = std::trunc(padding), values = static_cast<double>(count) * valueSize;
  const bool fits = extra >= 0 && values >= 0 && extra + values < std::numeric_limits<int>::max();
  return fits ? static_cast<int>(extra + values) : kNoStride;
}

/// What stored rows look like besides their length.
struct RowLayout {
  int header = 0;           // bytes before each row
  bool northFirst = false;  // the last row comes first
  bool swapped = false;     // values of four bytes in the opposite order
  bool packed = false;      // rows of four-byte values without padding, whatever stride is given
};

/// `rows` rows of `columns` values, `rowStride` bytes apart. Rows and columns are counted from 0.
class GridNodes {
 public:
  GridNodes(const void* data, int rowStride, int columns, int rows, RowLayout layout = {})
      : bytes_(static_cast<const unsigned char*>(data)),
        stride_(layout.packed ? RowStride(0, columns, sizeof(float)) : rowStride),
        columns_(columns),
        rows_(data && stride_ > 0 ? rows : 0),
        rowStep_(layout.northFirst ? -stride_ : stride_),
        first_(layout.header + (layout.northFirst ? (rows_ - 1) * stride_ : 0)),
        layout_(layout) {}

  /// Where `count` values of `size` bytes from a row and column on stand; null when one of them is
  /// outside the grid.
  const unsigned char* At(NodeIndex row, NodeIndex column, NodeIndex size,
                          NodeIndex count = 1) const {
    if (row < 0 || row >= rows_ || column < 0 || column + count > columns_) return nullptr;
    const NodeIndex at = OffsetOf(row, column, size);
    return at + count * size <= rows_ * stride_ ? bytes_ + at : nullptr;
  }

  /// Copies the values of one row from `column` on into `values`; false, nothing copied, when one
  /// of them is outside the grid.
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

  /// Whether there are N × N values, and rows that do not overlap.
  template <class Value, NodeIndex N>
  bool HoldStencils() const {
    const NodeIndex length = layout_.header + columns_ * NodeIndex{sizeof(Value)};
    return rows_ >= N && columns_ >= N && length <= stride_;
  }

  /// Copies the N × N values from a row and column on, whole numbers. They must be in the grid, and
  /// HoldStencils.
  template <class Value, std::size_t N>
  GEOMATH_INLINE void ReadStencil(double row, double column, Value (&values)[N][N]) const {
    ReadStencilAt(PlaceOf<Value>(row, column), values);
  }

  /// The same in two steps, of which the first is for columns: bytes from the first stored one to the
  /// value of a row and column.
  template <class Value>
  GEOMATH_INLINE NodeIndex PlaceOf(double row, double column) const {
    constexpr double kRound = 0x1.8p52;  // beside it a whole number below 2^51 is its bits
    const double place = static_cast<double>(first_) + row * static_cast<double>(rowStep_) +
                         column * double{sizeof(Value)};
    return std::bit_cast<NodeIndex>(place + kRound) - std::bit_cast<NodeIndex>(kRound);
  }
  template <class Value, std::size_t N>
  GEOMATH_INLINE void ReadStencilAt(NodeIndex place, Value (&values)[N][N]) const {
    for (std::size_t r = 0; r < N; ++r)
      std::memcpy(values[r], bytes_ + (place + static_cast<NodeIndex>(r) * rowStep_),
                  sizeof values[r]);
    if constexpr (sizeof(Value) == sizeof(std::uint32_t))
      if (layout_.swapped)
        for (auto& line : values)
          for (Value& value : line) value = Swapped(value);
  }

 private:
  GEOMATH_INLINE NodeIndex OffsetOf(NodeIndex row, NodeIndex column, NodeIndex size) const {
    return first_ + row * rowStep_ + column * size;
  }

  template <class Value>
  static GEOMATH_INLINE Value Swapped(Value value) {
    static_assert(sizeof(Value) == sizeof(std::uint32_t));
    const auto u = std::bit_cast<std::uint32_t>(value);
    return std::bit_cast<Value>((u >> 24) | ((u >> 8) & 0xff00U) | ((u << 8) & 0xff0000U) |
                                (u << 24));
  }

  const unsigned char* bytes_;
  NodeIndex stride_, columns_, rows_;
  NodeIndex rowStep_;  // bytes from a row to the next of the rule
  NodeIndex first_;    // bytes to the first value of row 0
  RowLayout layout_;
};

}  // namespace zel_cs::geomath
