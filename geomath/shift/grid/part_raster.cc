#include "geomath/shift/grid/part_raster.h"

#include <algorithm>
#include <cmath>

namespace zel_cs::geomath {
namespace {

constexpr double kMaxCells = 256;  // along an axis
constexpr double kCellsPerPart = 8;

double Width(const PartFrame& part) { return (part.columns - 1) / part.stepsPerEast; }
double Height(const PartFrame& part) { return (part.rows - 1) / part.stepsPerNorth; }

// The cells of an axis that an interval meets, and those that lie in it with a cell to spare on both
// sides, whatever the rounding.
struct CellRange {
  std::size_t first, last;
  std::size_t firstInner, innerEnd;
  bool empty;

  CellRange(double from, double to, double lastCell) {
    constexpr double kRounding = 1e-6;  // cells
    empty = to < -kRounding || from > lastCell + 1 + kRounding;
    const auto cell = [lastCell](double x) {
      return static_cast<std::size_t>(std::clamp(std::floor(x), 0.0, lastCell));
    };
    first = cell(from - kRounding);
    last = cell(to + kRounding);
    firstInner = from <= -1 ? 0 : first + 1;
    innerEnd = to >= lastCell + 2 ? last + 1 : last;
  }
};

}  // namespace

PartRasterLists::PartRasterLists(std::span<const PartFrame> parts, const Turn& turn) {
  double south = parts[0].south, north = south, west = parts[0].west, width = 0;
  for (const PartFrame& part : parts) {
    south = std::min(south, part.south);
    north = std::max(north, part.south + Height(part));
    if (turn.length == 0) west = std::min(west, part.west);
  }
  for (const PartFrame& part : parts)
    width = std::max(width, turn.Reduce(part.west - west) + Width(part));
  if (turn.length > 0) width = std::min(width, turn.length);

  const double cells =
      std::min(kMaxCells, std::ceil(kCellsPerPart * std::sqrt(static_cast<double>(parts.size()))));
  frame_ = {south,   west,   cells / (north - south), cells / width, cells - 1, cells - 1,
            nullptr, nullptr};

  const auto side = static_cast<std::size_t>(cells);
  std::vector<std::vector<std::uint32_t>> lists(side * side);
  std::vector<bool> owned(side * side);
  for (std::uint32_t number = 0; number < parts.size(); ++number) {
    const PartFrame& part = parts[number];
    const double from = (part.south - south) * frame_.rowsPerUnit;
    const CellRange rows(from, from + Height(part) * frame_.rowsPerUnit, frame_.lastRow);
    const double atWest = turn.Reduce(part.west - west);
    // A part that goes past the turn begins a second time, before the western edge.
    for (const double turned : {0.0, turn.length}) {
      const double start = (atWest - turned) * frame_.columnsPerUnit;
      const CellRange columns(start, start + Width(part) * frame_.columnsPerUnit,
                              frame_.lastColumn);
      if (columns.empty) continue;
      for (std::size_t r = rows.first; r <= rows.last; ++r)
        for (std::size_t c = columns.first; c <= columns.last; ++c) {
          const std::size_t cell = r * side + c;
          if (owned[cell]) continue;
          if (lists[cell].empty() || lists[cell].back() != number) lists[cell].push_back(number);
          owned[cell] = r >= rows.firstInner && r < rows.innerEnd && c >= columns.firstInner &&
                        c < columns.innerEnd;
        }
      if (turn.length == 0) break;
    }
  }
  for (const auto& list : lists) {
    starts_.push_back(static_cast<std::uint32_t>(listed_.size()));
    listed_.insert(listed_.end(), list.begin(), list.end());
  }
  starts_.push_back(static_cast<std::uint32_t>(listed_.size()));
}

PartRaster PartRasterLists::View() const {
  PartRaster view = frame_;
  view.starts = starts_.data();
  view.listed = listed_.data();
  return view;
}

}  // namespace zel_cs::geomath
