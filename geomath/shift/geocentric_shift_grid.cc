#include "geomath/shift/geocentric_shift_grid.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "geomath/base/tangent_formulas.h"
#include "geomath/shift/grid/node_grid.h"

namespace zel_cs::geomath {
namespace {

constexpr int kRounds = 5;            // 300 m times 1e-5 five times is nothing
constexpr double kLastChange = 1e-8;  // metres
constexpr std::size_t kBlockPoints = 256;

using Columns = double[3][kBlockPoints];

}  // namespace

std::unique_ptr<GeocentricShiftGrid> GeocentricShiftGrid::Make(
    GeocentricShiftGridDefinition definition, std::string* reason) noexcept try {
  std::string fault;
  NodeGrid::Definition nodes;
  nodes.parts = std::move(definition.parts);
  nodes.turns = true;
  nodes.components = 3;
  std::fill_n(nodes.units, 3, definition.unit);
  std::unique_ptr<const NodeGrid> made;
  if (definition.ellipsoid.a > 0)
    made = NodeGrid::Make(std::move(nodes), fault);
  else
    fault = "the ellipsoid has no positive semi-major axis";
  if (made)
    return std::unique_ptr<GeocentricShiftGrid>(
        new GeocentricShiftGrid(definition, std::move(made)));
  if (reason) *reason = std::move(fault);
  return nullptr;
} catch (const std::exception&) {  // no memory
  if (reason) reason->assign("no memory");
  return nullptr;
}

GeocentricShiftGrid::GeocentricShiftGrid(const GeocentricShiftGridDefinition& definition,
                                         std::unique_ptr<const NodeGrid> nodes)
    : CoordinateShift(ShiftSpace::geocentric),
      ellipsoid_(definition.ellipsoid),
      position_(definition.position),
      nodes_(std::move(nodes)) {}

GeocentricShiftGrid::~GeocentricShiftGrid() = default;

// point ← point + sign·T(point).
void GeocentricShiftGrid::AddAtPoint(double sign, double* const (&point)[3], std::size_t count,
                                     ShiftStatus* status) const {
  static_assert(kBlockPoints == kMaxPoints);
  Columns at, translation;
  for (std::size_t c = 0; c < 3; ++c) std::copy_n(point[c], count, at[c]);
  ellipsoid_.XYZ_to_BLH_Batch(at[0], at[1], at[2], count);
  double* const values[] = {translation[0], translation[1], translation[2]};
  nodes_->Values(at[0], at[1], values, count, status);
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t i = 0; i < count; ++i) point[c][i] += sign * translation[c][i];
}

// point ← the result that is point + sign·T(result).
void GeocentricShiftGrid::AddAtResult(double sign, double* const (&point)[3], std::size_t count,
                                      ShiftStatus* status) const {
  Columns given, before;
  for (std::size_t c = 0; c < 3; ++c) std::copy_n(point[c], count, given[c]);
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t c = 0; c < 3; ++c) std::copy_n(point[c], count, before[c]);
    AddAtPoint(sign, point, count, status);
    for (std::size_t c = 0; c < 3; ++c)
      for (std::size_t i = 0; i < count; ++i)
        point[c][i] = given[c][i] + (point[c][i] - before[c][i]);
  }
  for (std::size_t i = 0; i < count; ++i) {
    double change = 0;
    for (std::size_t c = 0; c < 3; ++c) change += std::abs(point[c][i] - before[c][i]);
    if (HasResult(status[i]) && !(change <= kLastChange)) status[i] = ShiftStatus::notInvertible;
  }
}

void GeocentricShiftGrid::ForwardBlock(double* const (&point)[3], std::size_t count,
                                       ShiftStatus* status) const {
  if (position_ == GridPosition::source)
    AddAtPoint(1, point, count, status);
  else
    AddAtResult(1, point, count, status);
}

void GeocentricShiftGrid::InverseBlock(double* const (&point)[3], std::size_t count,
                                       ShiftStatus* status) const {
  if (position_ == GridPosition::source)
    AddAtResult(-1, point, count, status);
  else
    AddAtPoint(-1, point, count, status);
}

// T depends on φ and λ, these on X, Y, Z. With S = ∂T/∂(X, Y, Z) at the position of the look-up, the
// derivatives are I + S where that is the source, (I − S)⁻¹ where it is the target.
ShiftStatus GeocentricShiftGrid::Differentiate(const double (&source)[3], double,
                                               double (&jacobian)[3][3]) const {
  double at[] = {source[0], source[1], source[2]};
  const bool atTarget = position_ == GridPosition::target;
  if (atTarget)
    if (const ShiftResult moved = Forward(at[0], at[1], at[2]); !moved) return moved.status;
  ellipsoid_.XYZ_to_BLH_Batch(&at[0], &at[1], &at[2], 1);
  double values[3], slopes[3][2];
  const NodeSurface surface{{&values[0], &values[1], &values[2]},
                            {&slopes[0][0], &slopes[1][0], &slopes[2][0]},
                            {&slopes[0][1], &slopes[1][1], &slopes[2][1]}};
  ShiftStatus status;
  nodes_->Surface(&at[0], &at[1], surface, 1, &status);
  if (!HasResult(status)) return status;
  const auto frame =
      TangentFrame::At<simd::Scalar>(ellipsoid_.a, ellipsoid_.e2, at[0], at[1], at[2]);
  const double sign = atTarget ? -1 : 1;
  Matrix3 found = Matrix3::Identity();
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c)
      found.m[r][c] += sign * (slopes[r][0] * frame.axes.m[c][0] / frame.perLatitude +
                               slopes[r][1] * frame.axes.m[c][1] / frame.perLongitude);
  if (atTarget) found = found.Inverse();
  std::copy_n(&found.m[0][0], 9, &jacobian[0][0]);
  return ShiftStatus::converted;
}

}  // namespace zel_cs::geomath
