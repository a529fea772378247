#include "geomath/shift/shift_grid.h"

#include <exception>
#include <utility>

#include "geomath/shift/grid/node_grid.h"

namespace zel_cs::geomath {
namespace {

std::unique_ptr<NodeGrid> MakeNodes(ShiftGridDefinition& definition, std::string& reason) {
  const bool horizontal = definition.components != ShiftComponents::vertical;
  const bool offset = definition.northOffset != 0 || definition.eastOffset != 0;
  if (definition.space == ShiftSpace::geocentric) {
    reason = "a shift grid is geographic or plane";
    return nullptr;
  }
  if (offset && (!horizontal || definition.interpolation == ShiftInterpolation::biquadratic)) {
    reason = "an offset goes with bilinear shifts to the north and east";
    return nullptr;
  }
  const double h = definition.horizontalUnit, v = definition.verticalUnit;
  NodeGrid::Definition nodes;
  nodes.parts = std::move(definition.parts);
  nodes.turns = definition.space == ShiftSpace::geographic;
  nodes.components = static_cast<std::size_t>(definition.components) + 1;
  nodes.units[0] = horizontal ? h : v;
  nodes.units[1] = h;
  nodes.units[2] = v;
  nodes.northOffset = definition.northOffset;
  nodes.eastOffset = definition.eastOffset;
  nodes.interpolation = definition.interpolation;
  return NodeGrid::Make(std::move(nodes), reason);
}

}  // namespace

std::unique_ptr<ShiftGrid> ShiftGrid::Make(ShiftGridDefinition definition,
                                           std::string* reason) noexcept try {
  std::string fault;
  std::unique_ptr<NodeGrid> nodes = MakeNodes(definition, fault);
  if (nodes) return std::unique_ptr<ShiftGrid>(new ShiftGrid(definition, std::move(nodes)));
  if (reason) *reason = std::move(fault);
  return nullptr;
} catch (const std::exception&) {  // no memory
  if (reason) reason->assign("no memory");
  return nullptr;
}

ShiftGrid::ShiftGrid(const ShiftGridDefinition& definition, std::unique_ptr<NodeGrid> nodes)
    : CoordinateShift(definition.space),
      components_(definition.components),
      interpolation_(definition.interpolation),
      nodes_(std::move(nodes)) {}

ShiftGrid::~ShiftGrid() = default;

bool ShiftGrid::HasAccuracies() const { return nodes_->HasAccuracies(); }

bool ShiftGrid::Accuracy(double first, double second, double* accuracies) const {
  return nodes_->Accuracy(first, second, accuracies);
}

void ShiftGrid::ForwardBlock(double* const (&point)[3], std::size_t count,
                             ShiftStatus* status) const {
  nodes_->Forward(point, count, status);
}

void ShiftGrid::InverseBlock(double* const (&point)[3], std::size_t count,
                             ShiftStatus* status) const {
  nodes_->Inverse(point, count, status);
}

ShiftStatus ShiftGrid::Differentiate(const double (&source)[3], double (&jacobian)[3][3]) const {
  double slopes[3][2];
  const ShiftStatus status = nodes_->Slopes(source[0], source[1], slopes);
  if (!HasResult(status)) return status;
  const int first = components_ == ShiftComponents::vertical ? 2 : 0;
  const int count = components_ == ShiftComponents::horizontal ? 2 : 3 - first;
  for (int i = 0; i < count; ++i)
    for (int c = 0; c < 2; ++c) jacobian[first + i][c] += slopes[i][c];
  return status;
}

}  // namespace zel_cs::geomath
