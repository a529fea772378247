#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "geomath/export.h"
#include "geomath/shift/coordinate_shift.h"
#include "geomath/shift/shift_grid.h"

namespace zel_cs::geomath {

struct MeshPoint;
class TriangleShifts;

/// Where a point outside all triangles takes its shift from. A point that a fall-back converts has
/// the status ShiftStatus::extrapolated.
enum class TriangulationFallback : unsigned char {
  none,             ///< it is refused
  nearestSide,      ///< the triangle with the nearest side
  nearestCentroid,  ///< the triangle with the nearest centroid
};

/// A vertex: its position in the source and in the target system (radians or metres), and what is
/// added to heights (metres). A part that the triangulation does not transform is not looked at.
struct TriangulationVertex {
  /// In the source system, in the target system, and the offset.
  double north = 0, east = 0;
  double targetNorth = 0, targetEast = 0;
  double heightOffset = 0;
};

/// What a Triangulation is made of.
struct TriangulationDefinition {
  /// Geographic, or plane.
  ShiftSpace space = ShiftSpace::plane;
  /// What is transformed, and how points outside are.
  ShiftComponents components = ShiftComponents::horizontal;
  TriangulationFallback fallback = TriangulationFallback::none;
  /// Triangles are numbers of vertices, in any order.
  std::vector<TriangulationVertex> vertices;
  std::vector<std::array<std::uint32_t, 3>> triangles;
};

/// A transformation that is affine in each triangle of a network: the target position, the height
/// offset, or both are interpolated between the three vertices (barycentric coordinates). Networks
/// as the national surveys of Finland, Norway and Switzerland publish them.
///
/// A point on a side or vertex belongs to one triangle, whatever their order: as if it stood a
/// little farther north, on a side that runs north a little farther west; on the outer sides it
/// belongs to the triangle there is. Where triangles overlap, the order of their vertices in space
/// decides. Degenerate triangles hold no point. Longitudes of vertices run on across the half turn.
///
/// Inverse takes the triangles of the target positions (of the source positions where only heights
/// are transformed) and is the true inverse of Forward. With a fall-back, a point beyond the
/// triangles that no choice of triangle takes back is refused as ShiftStatus::notInvertible.
class GEOMATH_API Triangulation : public CoordinateShift {
 public:
  /// Makes a triangulation. Null when the definition is not sound: no triangle that is not
  /// degenerate, a number of no vertex, a coordinate that is not finite, latitudes beyond a pole or
  /// more than one turn of longitudes, the space is geocentric, no memory. `reason`, when given,
  /// then says which.
  static std::unique_ptr<Triangulation> Make(const TriangulationDefinition& definition,
                                             std::string* reason = nullptr) noexcept;
  ~Triangulation() override;

  /// What is transformed, and how points outside are.
  ShiftComponents Components() const { return components_; }
  TriangulationFallback Fallback() const { return fallback_; }

 private:
  explicit Triangulation(const TriangulationDefinition& definition);

  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  ShiftStatus Differentiate(const double (&source)[3], double date,
                            double (&jacobian)[3][3]) const override;

  void Convert(bool forward, double* const (&point)[3], std::size_t count,
               ShiftStatus* status) const;
  ShiftStatus Extrapolate(bool forward, const MeshPoint& p, std::uint32_t& triangle) const;

  ShiftComponents components_;
  TriangulationFallback fallback_;
  std::unique_ptr<const TriangleShifts> source_, target_;
};

}  // namespace zel_cs::geomath
