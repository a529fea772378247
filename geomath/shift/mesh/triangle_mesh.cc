#include "geomath/shift/mesh/triangle_mesh.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace zel_cs::geomath {
namespace {

// A point this far outside, as a part of a triangle's area, is on its side: the rounding of
// coordinates that went through other units.
constexpr double kOnSide = 1e-9;

constexpr double kCellsPerTriangle = 2;
constexpr std::size_t kMaxListedPerTriangle = 40;  // on average; else the raster is made coarser
constexpr std::size_t kUsualRowsPerTriangle = 4;   // room that is made at once

// Twice the area of a, b, p: positive when p lies to the left of the way from a to b. Every triangle
// asks a side from its western to its eastern end, so that neighbours get the same number.
double SideOf(const MeshPoint& a, const MeshPoint& b, const MeshPoint& p) {
  return (b.east - a.east) * (p.north - a.north) - (b.north - a.north) * (p.east - a.east);
}

// Whether a point is in the triangle of a, b, c, which are west of each other. A point on a side
// counts as to its left; inside, it is to the left of the long side and to the right of the others,
// or the other way round. To the wrong hand of all three no point can be.
bool IsInside(const MeshPoint& a, const MeshPoint& b, const MeshPoint& c, const MeshPoint& p) {
  const bool leftOfAb = SideOf(a, b, p) >= 0, leftOfBc = SideOf(b, c, p) >= 0;
  const bool leftOfAc = SideOf(a, c, p) >= 0;
  return (leftOfAb == leftOfBc) & (leftOfAb != leftOfAc);
}

double SquaredDistance(const MeshPoint& a, const MeshPoint& b) {
  const double north = b.north - a.north, east = b.east - a.east;
  return north * north + east * east;
}

// From a side to a point.
double SquaredDistance(const MeshPoint& a, const MeshPoint& b, const MeshPoint& p) {
  const double north = b.north - a.north, east = b.east - a.east;
  const double along = (p.north - a.north) * north + (p.east - a.east) * east;
  const double length = north * north + east * east;
  if (along <= 0) return SquaredDistance(a, p);
  if (along >= length) return SquaredDistance(b, p);
  const double across = SideOf(a, b, p);
  return across * across / length;
}

double IntoAxis(double x, double last) { return x > 0 ? std::min(x, last) : 0; }

}  // namespace

TriangleMesh::TriangleMesh(std::span<const MeshPoint> vertices,
                           std::span<const MeshTriangle> triangles) {
  corners_.reserve(triangles.size());
  for (const MeshTriangle& triangle : triangles) {
    MeshPoint p[] = {vertices[triangle[0]], vertices[triangle[1]], vertices[triangle[2]]};
    std::sort(p, p + 3, WestOf);
    const double area = SideOf(p[0], p[2], p[1]);
    corners_.push_back({p[0], p[1], p[2], std::isfinite(1 / area) ? area : 0});
  }
  MakeRaster();
  corners_.push_back({});
}

// The cells of an axis between two positions in cells, with room for the rounding of points there.
TriangleMesh::CellRange TriangleMesh::CellsBetween(double from, double to, double last) {
  constexpr double kRoom = 1e-3;
  return {static_cast<std::size_t>(IntoAxis(from - kRoom, last)),
          static_cast<std::size_t>(IntoAxis(to + kRoom, last))};
}

// Calls visit(first, last) for the cells of each row that a triangle meets.
template <class Visit>
void TriangleMesh::VisitRows(std::uint32_t triangle, Visit visit) const {
  const Corners& t = corners_[triangle];
  MeshPoint p[] = {t.a, t.b, t.c};  // in cells
  for (MeshPoint& corner : p)
    corner = {(corner.north - southWest_.north) * cellsPerUnit_.north,
              (corner.east - southWest_.east) * cellsPerUnit_.east};
  struct Rising {  // a side, from its southern end
    double south, north, east, perNorth;
  } sides[3];
  int count = 0;  // one along a row has its ends on the other two
  for (int k = 0; k < 3; ++k) {
    const bool up = p[k].north < p[(k + 1) % 3].north;
    const MeshPoint &a = p[up ? k : (k + 1) % 3], &b = p[up ? (k + 1) % 3 : k];
    if (a.north < b.north)
      sides[count++] = {a.north, b.north, a.east, (b.east - a.east) / (b.north - a.north)};
  }
  const auto [south, north] = std::minmax({p[0].north, p[1].north, p[2].north});
  const CellRange rows = CellsBetween(south, north, lastRow_);
  for (std::size_t row = rows.first; row <= rows.last; ++row) {
    // From the westernmost to the easternmost point of the sides in this row, and beside it where
    // rows meet.
    constexpr double kRoom = 2e-3;
    const double low = static_cast<double>(row) - kRoom, high = low + 1 + 2 * kRoom;
    double west = p[2].east, east = p[0].east;
    for (int k = 0; k < count; ++k) {
      const Rising& side = sides[k];
      const double from = std::max(low, side.south), to = std::min(high, side.north);
      if (from > to) continue;
      const double entry = side.east + (from - side.south) * side.perNorth;
      const double exit = side.east + (to - side.south) * side.perNorth;
      west = std::min(west, std::min(entry, exit));
      east = std::max(east, std::max(entry, exit));
    }
    if (!(west <= east)) continue;
    const CellRange columns = CellsBetween(west, east, lastColumn_);
    const std::size_t start = row * (static_cast<std::size_t>(lastColumn_) + 1);
    visit(start + columns.first, start + columns.last);
  }
}

void TriangleMesh::MakeRaster() {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  MeshPoint low{kInfinity, kInfinity}, high{-kInfinity, -kInfinity};
  for (const Corners& t : corners_)
    for (const MeshPoint& p : {t.a, t.b, t.c}) {
      low = {std::min(low.north, p.north), std::min(low.east, p.east)};
      high = {std::max(high.north, p.north), std::max(high.east, p.east)};
    }
  const double height = high.north - low.north, width = high.east - low.east;
  southWest_ = low;
  const auto last = static_cast<std::uint32_t>(corners_.size());
  starts_.assign(2, 0);
  listed_.assign(1, last);
  if (!(height > 0 && width > 0)) return;  // all degenerate

  struct Cells {  // of a row
    std::uint32_t first, last, triangle;
  };
  std::vector<Cells> met;
  const double count = static_cast<double>(corners_.size());
  const std::size_t limit = kMaxListedPerTriangle * corners_.size() + 16;
  met.reserve(kUsualRowsPerTriangle * corners_.size());
  std::size_t listed = 0;
  for (double cells = kCellsPerTriangle * count; cells >= 1; cells /= 16) {
    // Cells about as high as wide, at least one.
    const double rows = std::clamp(std::sqrt(cells * height / width), 1.0, cells);
    lastRow_ = std::ceil(rows) - 1;
    lastColumn_ = std::ceil(cells / rows) - 1;
    cellsPerUnit_ = {(lastRow_ + 1) / height, (lastColumn_ + 1) / width};
    met.clear();
    listed = 0;
    for (std::uint32_t number = 0; number < last && listed <= limit; ++number)
      if (Holds(number))
        VisitRows(number, [&](std::size_t from, std::size_t to) {
          met.push_back({static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to), number});
          listed += to - from + 1;
        });
    if (listed <= limit) break;
  }

  const auto cellCount = static_cast<std::size_t>((lastRow_ + 1) * (lastColumn_ + 1));
  std::vector<std::uint32_t> next(cellCount + 2);  // how many more a cell lists than that before it
  for (const Cells& cells : met) {
    ++next[cells.first];
    --next[cells.last + 1];
  }
  starts_.assign(cellCount + 1, 0);
  std::uint32_t inCell = 0;
  for (std::size_t cell = 0; cell < cellCount; ++cell) {
    inCell += next[cell];
    next[cell] = starts_[cell];
    starts_[cell + 1] = starts_[cell] + inCell + 1;  // one for the end of the list
  }
  listed_.assign(listed + cellCount, last);
  for (const Cells& cells : met)
    for (std::size_t cell = cells.first; cell <= cells.last; ++cell)
      listed_[next[cell]++] = cells.triangle;
}

std::size_t TriangleMesh::CellOf(const MeshPoint& p) const {
  const double row = IntoAxis((p.north - southWest_.north) * cellsPerUnit_.north, lastRow_);
  const double column = IntoAxis((p.east - southWest_.east) * cellsPerUnit_.east, lastColumn_);
  const auto columns = static_cast<std::size_t>(lastColumn_) + 1;
  return static_cast<std::size_t>(row) * columns + static_cast<std::size_t>(column);
}

// All points are asked for the first triangle of their cell, those left for the second, and so on: a
// loop over one point's list ends where no processor expects it.
void TriangleMesh::Find(const MeshPoint* points, std::size_t count,
                        std::uint32_t* triangles) const {
  const std::size_t all = count;
  const auto last = static_cast<std::uint32_t>(corners_.size() - 1);
  std::uint32_t next[kMaxPoints], left[kMaxPoints];
  for (std::size_t i = 0; i < count; ++i) {
    next[i] = starts_[CellOf(points[i])];
    left[i] = static_cast<std::uint32_t>(i);
  }
  while (count > 0) {
    std::size_t stillLeft = 0;
    for (std::size_t k = 0; k < count; ++k) {
      const std::uint32_t i = left[k];
      const std::uint32_t number = listed_[next[i]++];
      triangles[i] = number;
      left[stillLeft] = i;
      const Corners& t = corners_[number];
      stillLeft += !(IsInside(t.a, t.b, t.c, points[i]) | (number == last));
    }
    count = stillLeft;
  }
  for (std::size_t i = 0; i < all; ++i)
    if (triangles[i] == last) triangles[i] = FindOnSide(points[i]);
}

// The triangle on whose side a point is that no triangle holds.
std::uint32_t TriangleMesh::FindOnSide(const MeshPoint& p) const {
  const auto last = static_cast<std::uint32_t>(corners_.size() - 1);
  for (std::uint32_t i = starts_[CellOf(p)]; listed_[i] != last; ++i) {
    const Corners& t = corners_[listed_[i]];
    const double room = -kOnSide * std::abs(t.area), sense = t.area > 0 ? 1 : -1;
    if (SideOf(t.a, t.c, p) * sense >= room && -SideOf(t.a, t.b, p) * sense >= room &&
        -SideOf(t.b, t.c, p) * sense >= room)
      return listed_[i];
  }
  return kNoTriangle;
}

void TriangleMesh::FindSides(std::span<const MeshPoint> vertices,
                             std::span<const MeshTriangle> triangles) {
  std::vector<Side> all;
  for (std::uint32_t number = 0; number < triangles.size(); ++number) {
    if (!Holds(number)) continue;
    for (std::size_t k = 0; k < 3; ++k) {
      MeshPoint a = vertices[triangles[number][k]], b = vertices[triangles[number][(k + 1) % 3]];
      if (WestOf(b, a)) std::swap(a, b);
      all.push_back({a, b, number});
    }
  }
  const auto before = [](const Side& s, const Side& t) {
    return WestOf(s.a, t.a) || (!WestOf(t.a, s.a) && WestOf(s.b, t.b));
  };
  std::stable_sort(all.begin(), all.end(), before);
  // A side that two triangles share is not an outer one.
  for (std::size_t i = 0, end; i < all.size(); i = end) {
    for (end = i + 1; end < all.size() && !before(all[i], all[end]);) ++end;
    if (end - i == 1) sides_.push_back(all[i]);
  }
}

std::uint32_t TriangleMesh::NearestSide(const MeshPoint& p) const {
  std::uint32_t nearest = kNoTriangle;
  double least = std::numeric_limits<double>::infinity(), facing = 0;
  for (const Side& side : sides_) {
    const double distance = SquaredDistance(side.a, side.b, p);
    if (distance > least) continue;
    const double across = SideOf(side.a, side.b, p);
    const double fromLine = across * across / SquaredDistance(side.a, side.b);
    if (distance == least && !(fromLine > facing)) continue;
    least = distance;
    facing = fromLine;
    nearest = side.triangle;
  }
  return nearest;
}

std::uint32_t TriangleMesh::NearestCentroid(const MeshPoint& p) const {
  std::uint32_t nearest = kNoTriangle;
  double least = std::numeric_limits<double>::infinity();
  for (std::uint32_t number = 0; number + 1 < corners_.size(); ++number) {
    const Corners& t = corners_[number];
    const MeshPoint centroid{(t.a.north + t.b.north + t.c.north) / 3,
                             (t.a.east + t.b.east + t.c.east) / 3};
    const double distance = SquaredDistance(centroid, p);
    if (t.area == 0 || !(distance < least)) continue;
    least = distance;
    nearest = number;
  }
  return nearest;
}

}  // namespace zel_cs::geomath
