#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "geomath/shift/mesh/triangle_mesh.h"
#include "geomath/shift/triangulation.h"

namespace zel_cs::geomath {

/// One direction of a triangulation: the triangles of the positions that it starts from, and what is
/// added to a point in each.
class TriangleShifts {
 public:
  /// Vertices go from `from` to `to`, heights change by `up` there. `turn` is that of longitudes, 0
  /// in a plane.
  TriangleShifts(std::span<const MeshPoint> from, std::span<const MeshPoint> to,
                 std::span<const double> up, std::span<const MeshTriangle> triangles,
                 TriangulationFallback fallback, double turn);

  /// Whether any triangle can hold points.
  bool HoldsAny() const;

  /// The position that the mesh knows a point by: its longitude in the turn of the vertices.
  MeshPoint Reduced(const MeshPoint& p) const;

  /// The triangles of points, as TriangleMesh::Find.
  void Find(const MeshPoint* reduced, std::size_t count, std::uint32_t* triangles) const {
    mesh_.Find(reduced, count, triangles);
  }
  /// The triangle of a point that lies outside all; kNoTriangle without a fall-back.
  std::uint32_t FindOutside(const MeshPoint& reduced) const;

  /// What is added to a point by a triangle's rule, wherever the point is; NaN for a triangle that is
  /// degenerate here.
  struct Shift {
    double north, east, up;
  };
  Shift ShiftAt(std::uint32_t triangle, const MeshPoint& reduced) const;
  /// What that changes by in a unit towards north and towards east.
  void Slopes(std::uint32_t triangle, Shift& perNorth, Shift& perEast) const {
    perNorth = affines_[triangle].perNorth;
    perEast = affines_[triangle].perEast;
  }

 private:
  struct Affine {
    Shift atOrigin, perNorth, perEast;
  };

  TriangleMesh mesh_;
  std::vector<Affine> affines_;
  TriangulationFallback fallback_;
  double turn_, west_ = 0;
};

}  // namespace zel_cs::geomath
