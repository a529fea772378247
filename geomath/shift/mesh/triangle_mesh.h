#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zel_cs::geomath {

/// A position in a plane, or on a plane of latitude and longitude.
struct MeshPoint {
  double north, east;
};

/// From the west to the east, on one meridian from the south to the north.
inline bool WestOf(const MeshPoint& a, const MeshPoint& b) {
  return a.east < b.east || (a.east == b.east && a.north < b.north);
}

using MeshTriangle = std::array<std::uint32_t, 3>;  // numbers of vertices

inline constexpr std::uint32_t kNoTriangle = ~std::uint32_t{0};

/// Which triangle a point lies in. A raster of cells lists the triangles that reach into each.
class TriangleMesh {
 public:
  TriangleMesh() = default;
  TriangleMesh(std::span<const MeshPoint> vertices, std::span<const MeshTriangle> triangles);

  /// Points that go through Find together.
  static constexpr std::size_t kMaxPoints = 256;

  /// The triangle that holds each of at most kMaxPoints points, the one of the lowest number where
  /// several do; kNoTriangle outside all.
  void Find(const MeshPoint* points, std::size_t count, std::uint32_t* triangles) const;

  /// The triangle with the nearest side; at a corner between two sides as near, that whose line is
  /// farther from the point: it faces it. FindSides must have been called.
  std::uint32_t NearestSide(const MeshPoint& p) const;
  void FindSides(std::span<const MeshPoint> vertices, std::span<const MeshTriangle> triangles);
  /// The triangle with the nearest centroid.
  std::uint32_t NearestCentroid(const MeshPoint& p) const;

  /// Whether a triangle can hold points.
  bool Holds(std::uint32_t triangle) const { return corners_[triangle].area != 0; }
  /// The westernmost corner of a triangle.
  const MeshPoint& Origin(std::uint32_t triangle) const { return corners_[triangle].a; }

 private:
  struct Corners {
    MeshPoint a, b, c;  // WestOf each other
    double area;        // twice, positive when b is north of the side from a to c; 0 if degenerate
  };
  struct Side {
    MeshPoint a, b;
    std::uint32_t triangle;
  };
  struct CellRange {
    std::size_t first, last;
  };

  void MakeRaster();
  std::size_t CellOf(const MeshPoint& p) const;
  std::uint32_t FindOnSide(const MeshPoint& p) const;
  static CellRange CellsBetween(double from, double to, double last);
  template <class Visit>
  void VisitRows(std::uint32_t triangle, Visit visit) const;

  std::vector<Corners> corners_;  // and one behind the last, which ends the lists
  std::vector<Side> sides_;
  MeshPoint southWest_{}, cellsPerUnit_{};
  double lastRow_ = 0, lastColumn_ = 0;
  std::vector<std::uint32_t> starts_, listed_;  // of each cell, row by row
};

}  // namespace zel_cs::geomath
