#include "geomath/shift/grid/node_grid.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/shift/grid/interpolation.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {
namespace {

// Beyond this a number of steps is a number of turns.
constexpr double kStepsRounding = 1e-6;

// Radians or metres. Beyond the farthest edge and below the finest step (6 µm on the ground, or this
// part of the farthest edge) differences of positions overflow or vanish.
constexpr double kFarthestEdge = 1e12;
constexpr double kFinestStep = 1e-12;

// Why a part cannot be used; empty when it can.
std::string FaultOf(const ShiftGridPart& part, bool turns, std::size_t components, int minNodes) {
  for (const double number : {part.south, part.west, part.northStep, part.eastStep})
    if (!std::isfinite(number)) return "a position or step is not finite";
  if (!(part.northStep > 0 && part.eastStep > 0)) return "a step is not positive";
  if (part.rows < minNodes || part.columns < minNodes) return "too few rows or columns";
  const double north = part.south + part.northStep * (part.rows - 1);
  const double width = part.eastStep * (part.columns - 1);
  double farthest = 1;
  for (const double edge : {part.south, north, part.west, part.west + width})
    farthest = std::max(farthest, std::abs(edge));
  if (farthest > kFarthestEdge) return "an edge is too far away";
  if (std::min(part.northStep, part.eastStep) < kFinestStep * farthest)
    return "a step is too small";
  if (turns) {
    const double pole = kHalfPi + part.northStep * kStepsRounding;
    if (part.south < -pole || north > pole) return "latitudes reach beyond a pole";
    if (width > kTwoPi + part.eastStep * kStepsRounding) return "longitudes make more than a turn";
    if (std::abs(part.west) > 2 * kTwoPi) return "longitudes lie beyond two turns";
  }
  const auto nodes = static_cast<std::size_t>(part.rows) * static_cast<std::size_t>(part.columns);
  if (part.values.size() != nodes * components) return "its size does not fit its values";
  if (!part.accuracies.empty() && part.accuracies.size() != part.values.size())
    return "its size does not fit its accuracies";
  return "";
}

// The order in which parts are asked: it depends on nothing but the parts.
bool AskedBefore(const ShiftGridPart& a, const ShiftGridPart& b) {
  const auto key = [](const ShiftGridPart& part) {
    return std::tuple(-part.level, part.northStep * part.eastStep,
                      static_cast<double>(part.rows) * part.columns, part.south, part.west,
                      std::string_view(part.name));
  };
  const auto ka = key(a), kb = key(b);
  if (ka != kb || a.values.size() != b.values.size()) return ka < kb;
  return std::memcmp(a.values.data(), b.values.data(), a.values.size() * sizeof(float)) < 0;
}

// A grid around the earth whose last column stops before its first one again gets that column.
void CloseTurn(ShiftGridPart& part, std::size_t components) {
  if (std::abs(part.columns * part.eastStep - kTwoPi) > part.eastStep * kStepsRounding) return;
  const auto close = [&](std::vector<float>& values) {
    std::vector<float> closed;
    closed.reserve(values.size() + static_cast<std::size_t>(part.rows) * components);
    const auto rowLength =
        static_cast<std::ptrdiff_t>(part.columns) * static_cast<std::ptrdiff_t>(components);
    for (auto row = values.begin(); row != values.end(); row += rowLength) {
      closed.insert(closed.end(), row, row + rowLength);
      closed.insert(closed.end(), row, row + static_cast<std::ptrdiff_t>(components));
    }
    values = std::move(closed);
  };
  close(part.values);
  if (!part.accuracies.empty()) close(part.accuracies);
  ++part.columns;
}

// Brings values into coordinate units; false when one is infinite then. Single precision keeps 6 µm
// of 100 m.
bool Scale(std::vector<float>& values, const double* units, std::size_t components) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i] = static_cast<float>(values[i] * units[i % components]);
    if (std::isinf(values[i])) return false;
  }
  return true;
}

void Append(std::vector<float>& all, std::vector<float> some) {
  if (all.empty())
    all = std::move(some);
  else
    all.insert(all.end(), some.begin(), some.end());
}

double LargestShift(const std::vector<float>& values, std::size_t component,
                    std::size_t components) {
  float largest = 0;
  for (std::size_t i = component; i < values.size(); i += components)
    largest = std::max(largest, std::abs(values[i]));  // NaN is not larger
  return largest;
}

}  // namespace

std::unique_ptr<NodeGrid> NodeGrid::Make(Definition definition, std::string& reason) {
  std::vector<ShiftGridPart>& parts = definition.parts;
  const std::size_t components = definition.components;
  const bool turns = definition.turns;
  if (parts.empty() || parts.size() > static_cast<std::size_t>(ShiftGrid::kMaxParts)) {
    reason = "a grid has 1 to 4096 parts";
    return nullptr;
  }
  const double offsets[] = {definition.northOffset, definition.eastOffset};
  const auto isFinite = [](double number) { return std::isfinite(number); };
  if (!std::all_of(definition.units, definition.units + components, isFinite) ||
      !std::all_of(offsets, offsets + 2, isFinite)) {
    reason = "a unit or offset is not finite";
    return nullptr;
  }
  const bool bilinear = definition.interpolation == ShiftInterpolation::bilinear;
  const int minNodes = bilinear ? BilinearShift::kSize : BiquadraticShift::kSize;
  for (ShiftGridPart& part : parts) {
    reason = FaultOf(part, turns, components, minNodes);
    if (reason.empty() && !Scale(part.values, definition.units, components))
      reason = "a value is infinite";
    if (!reason.empty()) {
      reason = "part '" + part.name + "': " + reason;
      return nullptr;
    }
    if (turns) CloseTurn(part, components);
  }
  std::sort(parts.begin(), parts.end(), AskedBefore);

  std::unique_ptr<NodeGrid> made(new NodeGrid);
  made->components_ = components;
  made->interpolation_ = definition.interpolation;
  made->Collect(parts);
  const Turn turn = turns ? Turn{kTwoPi, 1 / kTwoPi} : Turn{};
  made->raster_ = PartRasterLists(made->frames_, turn);
  ShiftNodes& nodes = made->nodes_;
  nodes.grid = {made->frames_.data(), made->frames_.size(), turn, made->raster_.View(),
                made->values_.data()};
  std::copy_n(offsets, 2, nodes.offset);
  for (std::size_t k = 0; k < 2 && components > 1; ++k)
    nodes.reach[k] = LargestShift(made->values_, k, components);
  return made;
}

// Puts the nodes of all parts behind each other and leaves the parts without them.
void NodeGrid::Collect(std::vector<ShiftGridPart>& parts) {
  const bool accurate = std::none_of(parts.begin(), parts.end(), [](const ShiftGridPart& part) {
    return part.accuracies.empty();
  });
  for (ShiftGridPart& part : parts) {
    frames_.push_back({part.south, part.west, 1 / part.northStep, 1 / part.eastStep,
                       static_cast<double>(part.rows), static_cast<double>(part.columns),
                       static_cast<double>(values_.size() / components_)});
    Append(values_, std::exchange(part.values, {}));
    if (accurate) Append(accuracies_, std::exchange(part.accuracies, {}));
  }
}

// `run` is a callable on a rule and an integral constant, the number of components.
template <class Run>
void NodeGrid::RunAs(ShiftInterpolation interpolation, std::size_t components, Run run) {
  const auto asRule = [&](auto rule) {
    switch (components) {
      case 1:
        return run(rule, std::integral_constant<int, 1>());
      case 2:
        return run(rule, std::integral_constant<int, 2>());
      default:
        return run(rule, std::integral_constant<int, 3>());
    }
  };
  if (interpolation == ShiftInterpolation::bilinear)
    asRule(BilinearShift());
  else
    asRule(BiquadraticShift());
}

void NodeGrid::Values(const double* north, const double* east, double* const* values,
                      std::size_t count, ShiftStatus* status) const {
  RunAs(interpolation_, components_, [&](auto rule, auto components) {
    const auto convert = simd::ForActiveSet([](auto target) {
      return &ShiftKernel<decltype(target), decltype(rule), decltype(components)::value>::Values;
    });
    convert(nodes_, north, east, values, count, status);
  });
}

void NodeGrid::Surface(const double* north, const double* east, const NodeSurface& surface,
                       std::size_t count, ShiftStatus* status) const {
  RunAs(interpolation_, components_, [&](auto rule, auto components) {
    const auto convert = simd::ForActiveSet([](auto target) {
      return &ShiftKernel<decltype(target), decltype(rule), decltype(components)::value>::Surface;
    });
    convert(nodes_, north, east, surface, count, status);
  });
}

void NodeGrid::Cells(const double* north, const double* east, const CellSurface& surface,
                     std::size_t count, ShiftStatus* status) const {
  RunAs(ShiftInterpolation::bilinear, components_, [&](auto, auto components) {
    const auto convert = simd::ForActiveSet([](auto target) {
      return &CellKernel<decltype(target), decltype(components)::value>::Surface;
    });
    convert(nodes_, north, east, surface, count, status);
  });
}

void NodeGrid::Forward(double* const* point, std::size_t count, ShiftStatus* status) const {
  RunAs(interpolation_, components_, [&](auto rule, auto components) {
    const auto convert = simd::ForActiveSet([](auto target) {
      return &ShiftKernel<decltype(target), decltype(rule), decltype(components)::value>::Forward;
    });
    convert(nodes_, point, count, status);
  });
}

void NodeGrid::Inverse(double* const* point, std::size_t count, ShiftStatus* status) const {
  RunAs(interpolation_, components_, [&](auto rule, auto components) {
    const auto convert = simd::ForActiveSet([](auto target) {
      return &ShiftKernel<decltype(target), decltype(rule), decltype(components)::value>::Inverse;
    });
    convert(nodes_, point, count, status);
  });
}

bool NodeGrid::Accuracy(double north, double east, double* accuracies) const {
  if (!HasAccuracies()) return false;
  ShiftNodes nodes = nodes_;
  nodes.grid.nodes = accuracies_.data();
  double found[3];
  double* const columns[] = {&found[0], &found[1], &found[2]};
  ShiftStatus status = ShiftStatus::outside;
  RunAs(ShiftInterpolation::bilinear, components_, [&](auto rule, auto components) {
    using Kernel = ShiftKernel<simd::Baseline, decltype(rule), decltype(components)::value>;
    Kernel::Values(nodes, &north, &east, columns, 1, &status);
  });
  if (!HasResult(status)) return false;
  std::copy_n(found, components_, accuracies);
  return true;
}

}  // namespace zel_cs::geomath
