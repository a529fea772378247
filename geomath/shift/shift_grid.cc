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

void ShiftGrid::DifferentiateBlock(const double* const (&source)[3], const double*,
                                   std::size_t count, double* const (&jacobian)[9],
                                   ShiftStatus* status) const {
  double unused[3][kMaxPoints];
  NodeSurface surface{{unused[0], unused[1], unused[2]}, {}, {}};
  const int first = components_ == ShiftComponents::vertical ? 2 : 0;
  for (int k = 0; k < 3 - first; ++k) {
    surface.alongNorth[k] = jacobian[3 * (first + k)];
    surface.alongEast[k] = jacobian[3 * (first + k) + 1];
  }
  nodes_->Surface(source[0], source[1], surface, count, status);
  for (int c = 0; c < 2 && first == 0; ++c)
    for (std::size_t i = 0; i < count; ++i) jacobian[4 * c][i] += 1;
}

}  // namespace zel_cs::geomath
