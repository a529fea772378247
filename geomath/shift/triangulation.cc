#include "geomath/shift/triangulation.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <span>
#include <tuple>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/shift/mesh/triangle_shifts.h"

namespace zel_cs::geomath {
namespace {

constexpr double kMaxLatitude = kHalfPi + 1e-9;

std::string FaultOf(const TriangulationDefinition& definition) {
  if (definition.space == ShiftSpace::geocentric) return "a triangulation is geographic or plane";
  const bool horizontal = definition.components != ShiftComponents::vertical;
  const bool geographic = definition.space == ShiftSpace::geographic;
  double west = HUGE_VAL, east = -HUGE_VAL;
  for (const TriangulationVertex& v : definition.vertices) {
    const bool finite =
        std::isfinite(v.north) && std::isfinite(v.east) &&
        (!horizontal || (std::isfinite(v.targetNorth) && std::isfinite(v.targetEast))) &&
        (definition.components == ShiftComponents::horizontal || std::isfinite(v.heightOffset));
    if (!finite) return "a vertex is not finite";
    if (geographic && !(std::abs(v.north) <= kMaxLatitude)) return "a vertex is beyond a pole";
    west = std::min(west, v.east);
    east = std::max(east, v.east);
  }
  if (geographic && east - west > kTwoPi) return "longitudes make more than a turn";
  for (const auto& triangle : definition.triangles)
    for (const std::uint32_t vertex : triangle)
      if (vertex >= definition.vertices.size()) return "a triangle has a number of no vertex";
  if (definition.triangles.size() >= kNoTriangle) return "too many triangles";
  return "";
}

// The numbers of triangles follow from their vertices in space, near ones beside each other.
void SortInSpace(std::vector<MeshTriangle>& triangles, std::span<const MeshPoint> vertices) {
  MeshPoint low = vertices[0], high = low;
  for (const MeshPoint& p : vertices) {
    low = {std::min(low.north, p.north), std::min(low.east, p.east)};
    high = {std::max(high.north, p.north), std::max(high.east, p.east)};
  }
  const double side = std::ceil(std::sqrt(static_cast<double>(triangles.size()) / 4));
  struct Keyed {
    double row, east;  // of the westernmost corner
    MeshTriangle triangle;
  };
  std::vector<Keyed> keyed;
  keyed.reserve(triangles.size());
  for (MeshTriangle& triangle : triangles) {
    std::sort(triangle.begin(), triangle.end(),
              [&](std::uint32_t a, std::uint32_t b) { return WestOf(vertices[a], vertices[b]); });
    const MeshPoint& p = vertices[triangle[0]];
    const double row = std::floor((p.north - low.north) / (high.north - low.north) * side);
    keyed.push_back({row >= 0 ? row : 0, p.east, triangle});  // no extent: all in one
  }
  const auto corners = [&](const Keyed& k) {
    const MeshPoint &a = vertices[k.triangle[0]], &b = vertices[k.triangle[1]],
                    &c = vertices[k.triangle[2]];
    return std::tuple(a.north, b.east, b.north, c.east, c.north);
  };
  std::sort(keyed.begin(), keyed.end(), [&](const Keyed& a, const Keyed& b) {
    if (a.row != b.row) return a.row < b.row;
    if (a.east != b.east) return a.east < b.east;
    return corners(a) < corners(b);
  });
  std::transform(keyed.begin(), keyed.end(), triangles.begin(),
                 [](const Keyed& k) { return k.triangle; });
}

}  // namespace

std::unique_ptr<Triangulation> Triangulation::Make(const TriangulationDefinition& definition,
                                                   std::string* reason) noexcept try {
  std::string fault = FaultOf(definition);
  std::unique_ptr<Triangulation> made;
  if (fault.empty() && !definition.triangles.empty()) made.reset(new Triangulation(definition));
  if (made && made->source_->HoldsAny() && (!made->target_ || made->target_->HoldsAny()))
    return made;
  if (fault.empty()) fault = "no triangle that is not degenerate";
  if (reason) *reason = std::move(fault);
  return nullptr;
} catch (const std::exception&) {  // no memory
  if (reason) reason->assign("no memory");
  return nullptr;
}

Triangulation::Triangulation(const TriangulationDefinition& definition)
    : CoordinateShift(definition.space),
      components_(definition.components),
      fallback_(definition.fallback) {
  const std::size_t count = definition.vertices.size();
  std::vector<MeshPoint> source(count), target(count);
  std::vector<double> up(count), down(count);
  const bool horizontal = components_ != ShiftComponents::vertical;
  for (std::size_t i = 0; i < count; ++i) {
    const TriangulationVertex& v = definition.vertices[i];
    source[i] = {v.north, v.east};
    target[i] = horizontal ? MeshPoint{v.targetNorth, v.targetEast} : source[i];
    if (components_ != ShiftComponents::horizontal) up[i] = v.heightOffset;
    down[i] = -up[i];
  }
  std::vector<MeshTriangle> triangles = definition.triangles;
  SortInSpace(triangles, source);
  const double turn = Space() == ShiftSpace::geographic ? kTwoPi : 0;
  source_ = std::make_unique<TriangleShifts>(source, target, up, triangles, fallback_, turn);
  if (horizontal)
    target_ = std::make_unique<TriangleShifts>(target, source, down, triangles, fallback_, turn);
}

Triangulation::~Triangulation() = default;

// The triangles of points outside all; coming back, the one whose rule takes the source point here
// and is the one that Forward takes for it.
ShiftStatus Triangulation::Extrapolate(bool forward, const MeshPoint& p,
                                       std::uint32_t& triangle) const {
  constexpr int kMaxTries = 8;
  const TriangleShifts& from = forward || !target_ ? *source_ : *target_;
  triangle = from.FindOutside(p);
  if (triangle == kNoTriangle) return ShiftStatus::outside;
  if (&from == source_.get()) return ShiftStatus::extrapolated;
  for (int i = 0; i < kMaxTries; ++i) {
    const TriangleShifts::Shift back = from.ShiftAt(triangle, p);
    const MeshPoint source = source_->Reduced({p.north + back.north, p.east + back.east});
    std::uint32_t forwards;
    source_->Find(&source, 1, &forwards);
    if (forwards == kNoTriangle) forwards = source_->FindOutside(source);
    if (forwards == triangle) return ShiftStatus::extrapolated;
    triangle = forwards;
  }
  return ShiftStatus::notInvertible;
}

// The triangles of all points are found before their shifts are read: the loops' steps do not wait
// for each other's memory.
void Triangulation::Convert(bool forward, double* const (&point)[3], std::size_t count,
                            ShiftStatus* status) const {
  const TriangleShifts& from = forward || !target_ ? *source_ : *target_;
  const double sign = forward || target_ ? 1 : -1;
  if (count == 0) return;
  MeshPoint reduced[kMaxPoints];
  std::uint32_t triangle[kMaxPoints];
  for (std::size_t i = 0; i < count; ++i) reduced[i] = from.Reduced({point[0][i], point[1][i]});
  from.Find(reduced, count, triangle);
  for (std::size_t i = 0; i < count; ++i) {
    if (triangle[i] == kNoTriangle) status[i] = Extrapolate(forward, reduced[i], triangle[i]);
    if (!HasResult(status[i])) continue;
    const TriangleShifts::Shift shift = from.ShiftAt(triangle[i], reduced[i]);
    if (target_) {
      point[0][i] += shift.north;
      point[1][i] += shift.east;
    }
    if (components_ != ShiftComponents::horizontal) point[2][i] += sign * shift.up;
  }
}

void Triangulation::ForwardBlock(double* const (&point)[3], std::size_t count,
                                 ShiftStatus* status) const {
  Convert(true, point, count, status);
}

void Triangulation::InverseBlock(double* const (&point)[3], std::size_t count,
                                 ShiftStatus* status) const {
  Convert(false, point, count, status);
}

ShiftStatus Triangulation::Differentiate(const double (&source)[3], double,
                                         double (&jacobian)[3][3]) const {
  const MeshPoint p = source_->Reduced({source[0], source[1]});
  std::uint32_t triangle;
  ShiftStatus status = ShiftStatus::converted;
  source_->Find(&p, 1, &triangle);
  if (triangle == kNoTriangle) status = Extrapolate(true, p, triangle);
  if (!HasResult(status)) return status;
  TriangleShifts::Shift perNorth, perEast;
  source_->Slopes(triangle, perNorth, perEast);
  if (target_) {
    jacobian[0][0] += perNorth.north;
    jacobian[0][1] += perEast.north;
    jacobian[1][0] += perNorth.east;
    jacobian[1][1] += perEast.east;
  }
  if (components_ != ShiftComponents::horizontal) {
    jacobian[2][0] = perNorth.up;
    jacobian[2][1] = perEast.up;
  }
  return status;
}

}  // namespace zel_cs::geomath
