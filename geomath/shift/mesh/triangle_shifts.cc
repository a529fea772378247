#include "geomath/shift/mesh/triangle_shifts.h"

#include <algorithm>
#include <limits>

#include "geomath/simd/rounding.h"

namespace zel_cs::geomath {

TriangleShifts::TriangleShifts(std::span<const MeshPoint> from, std::span<const MeshPoint> to,
                               std::span<const double> up, std::span<const MeshTriangle> triangles,
                               TriangulationFallback fallback, double turn)
    : mesh_(from, triangles), fallback_(fallback), turn_(turn) {
  if (fallback == TriangulationFallback::nearestSide) mesh_.FindSides(from, triangles);
  const auto [west, east] = std::minmax_element(from.begin(), from.end(), WestOf);
  west_ = (west->east + east->east - turn) / 2;

  affines_.reserve(triangles.size());
  for (MeshTriangle triangle : triangles) {
    std::sort(triangle.begin(), triangle.end(),
              [&](std::uint32_t a, std::uint32_t b) { return WestOf(from[a], from[b]); });
    const auto shift = [&](std::size_t corner) -> Shift {
      const std::uint32_t v = triangle[corner];
      return {to[v].north - from[v].north, to[v].east - from[v].east, up[v]};
    };
    const MeshPoint a = from[triangle[0]], b = from[triangle[1]], c = from[triangle[2]];
    const double bNorth = b.north - a.north, bEast = b.east - a.east;
    const double cNorth = c.north - a.north, cEast = c.east - a.east;
    const double area = bNorth * cEast - cNorth * bEast;
    const Shift s0 = shift(0), sB = shift(1), sC = shift(2);
    // The plane through the three values: Cramer's rule.
    const auto plane = [&](double Shift::*value, Affine& affine) {
      const double toB = sB.*value - s0.*value, toC = sC.*value - s0.*value;
      affine.atOrigin.*value = s0.*value;
      affine.perNorth.*value = (toB * cEast - toC * bEast) / area;
      affine.perEast.*value = (bNorth * toC - cNorth * toB) / area;
    };
    Affine affine;
    plane(&Shift::north, affine);
    plane(&Shift::east, affine);
    plane(&Shift::up, affine);
    affines_.push_back(affine);
  }
}

bool TriangleShifts::HoldsAny() const {
  for (std::uint32_t number = 0; number < affines_.size(); ++number)
    if (mesh_.Holds(number)) return true;
  return false;
}

MeshPoint TriangleShifts::Reduced(const MeshPoint& p) const {
  if (turn_ == 0) return p;
  return {p.north, p.east - turn_ * RoundDown((p.east - west_) / turn_)};
}

std::uint32_t TriangleShifts::FindOutside(const MeshPoint& reduced) const {
  switch (fallback_) {
    case TriangulationFallback::nearestSide:
      return mesh_.NearestSide(reduced);
    case TriangulationFallback::nearestCentroid:
      return mesh_.NearestCentroid(reduced);
    case TriangulationFallback::none:
      break;
  }
  return kNoTriangle;
}

TriangleShifts::Shift TriangleShifts::ShiftAt(std::uint32_t triangle,
                                              const MeshPoint& reduced) const {
  const MeshPoint& origin = mesh_.Origin(triangle);
  const double north = reduced.north - origin.north, east = reduced.east - origin.east;
  const Affine& affine = affines_[triangle];
  const auto value = [&](double Shift::*which) {
    return affine.atOrigin.*which + (affine.perNorth.*which * north + affine.perEast.*which * east);
  };
  return {value(&Shift::north), value(&Shift::east), value(&Shift::up)};
}

}  // namespace zel_cs::geomath
