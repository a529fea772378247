#include "geomath/shift/grid/shift_kernel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "geomath/base/batch_kernel.h"
#include "geomath/shift/grid/interpolation.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {
namespace {

using Target = simd::GEOMATH_KERNEL_TARGET;

// The rest of an inverse at which it is found, relative to the size of its coordinates: their own
// rounding and that of the sum. 1.8e-15 rad is 0.01 µm.
constexpr double kRestPerUnit = 8 * std::numeric_limits<double>::epsilon();

GEOMATH_INLINE double Larger(double a, double b) { return a > b ? a : b; }

GEOMATH_INLINE double Smaller(double a, double b) { return a < b ? a : b; }

GEOMATH_INLINE double RestAllowed(double north, double east) {
  return kRestPerUnit * Larger(1, Larger(std::abs(north), std::abs(east)));
}

// Where the value of a point comes from: its window and the point's position in it.
struct Window {
  double firstNode;
  double u, v;
};

template <class Rule>
GEOMATH_INLINE Window PlaceIn(const PartFrame& part, const PartPosition& at) {
  const AxisWindow row = Rule::Place(IntoAxis(at.north, part.rows - 1), part.rows);
  const AxisWindow column = Rule::Place(IntoAxis(at.east, part.columns - 1), part.columns);
  const double firstNode = part.firstNode + row.first * part.columns + column.first;
  return {firstNode, row.fraction, column.fraction};
}

// The values of a window, component by component.
template <class Rule, int kComponents>
using WindowValues = float[kComponents][Rule::kSize][Rule::kSize];

template <class Rule, int kComponents>
GEOMATH_INLINE void Read(const GridParts& grid, const PartFrame& part, double firstNode,
                         WindowValues<Rule, kComponents>& z) {
  const auto rowLength = static_cast<std::ptrdiff_t>(part.columns) * kComponents;
  const float* row = grid.nodes + static_cast<std::ptrdiff_t>(firstNode) * kComponents;
  for (int r = 0; r < Rule::kSize; ++r, row += rowLength)
    for (int c = 0; c < Rule::kSize; ++c)
      for (int k = 0; k < kComponents; ++k) z[k][r][c] = row[c * kComponents + k];
}

// One step of Newton's method for p + shift(p) = target, whose Jacobian is I + ∂shift/∂p, in the
// cell with values z. Returns what it leaves there: the larger twist times the area of the step in
// cells.
template <int kComponents>
GEOMATH_INLINE double Approach(const WindowValues<BilinearShift, kComponents>& z, double u,
                               double v, double stepsPerNorth, double stepsPerEast,
                               double targetNorth, double targetEast, double& north, double& east) {
  double nn, ne, twistN, en, ee, twistE;
  const double sN = BilinearShift::At(z[0], u, v, nn, ne, twistN);
  const double sE = BilinearShift::At(z[1], u, v, en, ee, twistE);
  nn = 1 + nn * stepsPerNorth;
  ne = ne * stepsPerEast;
  en = en * stepsPerNorth;
  ee = 1 + ee * stepsPerEast;
  const double restN = targetNorth - north - sN, restE = targetEast - east - sE;
  const double perDeterminant = 1 / (nn * ee - ne * en);
  const double stepN = (restN * ee - restE * ne) * perDeterminant;
  const double stepE = (restE * nn - restN * en) * perDeterminant;
  north += stepN;
  east += stepE;
  const double area = stepN * stepsPerNorth * (stepE * stepsPerEast);
  return Larger(std::abs(twistN * area), std::abs(twistE * area));
}

// A block of points in their windows; a point outside has the nearest window of some part. Nodes are
// gathered one point after the other between loops that vectorise.
template <class Rule, int kComponents>
struct WindowBlock {
  static constexpr int kSize = Rule::kSize;

  double part[kBatchBlock], firstNode[kBatchBlock], u[kBatchBlock], v[kBatchBlock];
  double inside[kBatchBlock];  // 1 or 0: numbers of one width need no conversion
  float values[kComponents][kSize][kSize][kBatchBlock];

  GEOMATH_INLINE void Set(std::size_t i, double number, const Window& window, bool isInside) {
    part[i] = number;
    firstNode[i] = window.firstNode;
    u[i] = window.u;
    v[i] = window.v;
    inside[i] = isInside ? 1 : 0;
  }

  GEOMATH_INLINE void Place(const GridParts& grid, const double* GEOMATH_RESTRICT north,
                            const double* GEOMATH_RESTRICT east, std::size_t count) {
    if (grid.count == 1) {
      const PartFrame only = *grid.parts;
      const Turn turn = grid.turn;
      for (std::size_t i = 0; i < count; ++i) {
        const PartPosition at = PositionIn(only, turn, north[i], east[i]);
        Set(i, 0, PlaceIn<Rule>(only, at), Holds(only, at));
      }
      return;
    }
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t found = grid.Find(north[i], east[i]);
      const std::uint32_t number = found == kNoPart ? 0 : found;
      const PartPosition at = PositionIn(grid.parts[number], grid.turn, north[i], east[i]);
      Set(i, number, PlaceIn<Rule>(grid.parts[number], at), found != kNoPart);
    }
  }

  GEOMATH_INLINE const PartFrame& PartOf(const GridParts& grid, std::size_t i) const {
    return grid.parts[static_cast<std::size_t>(part[i])];
  }

  GEOMATH_INLINE void Gather(const GridParts& grid, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      WindowValues<Rule, kComponents> z;
      Read<Rule, kComponents>(grid, PartOf(grid, i), firstNode[i], z);
      for (int k = 0; k < kComponents; ++k)
        for (int r = 0; r < kSize; ++r)
          for (int c = 0; c < kSize; ++c) values[k][r][c][i] = z[k][r][c];
    }
  }

  using Values = float[kSize][kSize];
  GEOMATH_INLINE void ValuesOf(std::size_t i, int k, Values& z) const {
    for (int r = 0; r < kSize; ++r)
      for (int c = 0; c < kSize; ++c) z[r][c] = values[k][r][c][i];
  }

  GEOMATH_INLINE double Shift(std::size_t i, int k) const {
    Values z;
    ValuesOf(i, k, z);
    return Rule::At(z, u[i], v[i]);
  }
};

// The steps in a unit of the coordinates, of the part of each point.
struct Steps {
  double perNorth[kBatchBlock], perEast[kBatchBlock];

  template <class Block>
  GEOMATH_INLINE Steps(const GridParts& grid, const Block& at, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      perNorth[i] = at.PartOf(grid, i).stepsPerNorth;
      perEast[i] = at.PartOf(grid, i).stepsPerEast;
    }
  }
};

GEOMATH_INLINE ShiftStatus StatusOf(double inside, double value) {
  if (inside != 1) return ShiftStatus::outside;
  return std::isnan(value) ? ShiftStatus::hole : ShiftStatus::converted;
}

// How far a position is outside of a part, in coordinate units; 0 inside.
struct Distance {
  double north, east;
};

Distance DistanceFrom(const PartFrame& part, const PartPosition& at) {
  const double north = at.north - IntoAxis(at.north, part.rows - 1);
  const double east = at.east - IntoAxis(at.east, part.columns - 1);
  return {std::abs(north) / part.stepsPerNorth, std::abs(east) / part.stepsPerEast};
}

// The part whose edge is nearest to a point outside of all; kNoPart when no part shifts so far.
std::uint32_t NearestPart(const ShiftNodes& nodes, double north, double east) {
  const GridParts& grid = nodes.grid;
  std::uint32_t nearest = kNoPart;
  double least = std::numeric_limits<double>::infinity();
  for (std::uint32_t number = 0; number < grid.count; ++number) {
    const PartFrame& part = grid.parts[number];
    // The western edge may be the nearer one across the turn.
    for (const double turned : {0.0, grid.turn.length}) {
      PartPosition at = PositionIn(part, grid.turn, north, east);
      at.east -= turned * part.stepsPerEast;
      const Distance distance = DistanceFrom(part, at);
      const double sum = distance.north + distance.east;
      if (!(distance.north <= nodes.reach[0] && distance.east <= nodes.reach[1] && sum < least))
        continue;
      least = sum;
      nearest = number;
    }
  }
  return nearest;
}

// The inverse of a point that the first steps have not found: near an edge, where its source lies in
// another part than the target, or where a neighbouring cell has much other slopes. Every part in
// which the search arrives is searched as if it had no end, until the source lies in the part that
// it was found with.
template <int kComponents>
ShiftStatus SearchInverse(const ShiftNodes& nodes, double targetNorth, double targetEast,
                          double& north, double& east) {
  constexpr int kMaxParts = 4, kMaxSteps = 30;
  const GridParts& grid = nodes.grid;
  std::uint32_t number = grid.Find(targetNorth, targetEast);
  if (number == kNoPart) number = NearestPart(nodes, targetNorth, targetEast);
  const double allowed = RestAllowed(targetNorth, targetEast);
  for (int round = 0; round < kMaxParts && number != kNoPart; ++round) {
    const PartFrame& part = grid.parts[number];
    north = targetNorth;
    east = targetEast;
    double cell = -1, rest = 0;
    bool found = false;
    for (int step = 0; step < kMaxSteps && !found; ++step) {
      const Window at = PlaceIn<BilinearShift>(part, PositionIn(part, grid.turn, north, east));
      found = at.firstNode == cell && rest <= allowed;
      if (found) break;
      cell = at.firstNode;
      WindowValues<BilinearShift, kComponents> z;
      Read<BilinearShift, kComponents>(grid, part, cell, z);
      rest = Approach<kComponents>(z, at.u, at.v, part.stepsPerNorth, part.stepsPerEast,
                                   targetNorth, targetEast, north, east);
      if (std::isnan(rest)) return ShiftStatus::hole;
    }
    if (!found) break;
    const std::uint32_t next = grid.Find(north, east);
    if (next == number) return ShiftStatus::converted;
    if (next == kNoPart) return ShiftStatus::outside;
    number = next;
  }
  return number == kNoPart ? ShiftStatus::outside : ShiftStatus::notInvertible;
}

template <int kComponents>
void InvertHorizontal(const ShiftNodes& nodes, double* const* point, std::size_t count,
                      ShiftStatus* status) {
  const GridParts& grid = nodes.grid;
  WindowBlock<BilinearShift, kComponents> at;
  double north[kBatchBlock], east[kBatchBlock], rest[kBatchBlock];
  double targetNorth[kBatchBlock], targetEast[kBatchBlock];
  for (std::size_t i = 0; i < count; ++i) {
    targetNorth[i] = point[0][i] - nodes.offset[0];
    targetEast[i] = point[1][i] - nodes.offset[1];
  }

  // A fixed-point step leaves the shift times its slope, centimetres; Newton's method leaves next to
  // nothing, unless it leaves the cell.
  at.Place(grid, targetNorth, targetEast, count);
  at.Gather(grid, count);
  for (std::size_t i = 0; i < count; ++i) {
    north[i] = targetNorth[i] - at.Shift(i, 0);
    east[i] = targetEast[i] - at.Shift(i, 1);
  }
  at.Place(grid, north, east, count);
  at.Gather(grid, count);
  const Steps steps(grid, at, count);
  for (std::size_t i = 0; i < count; ++i) {
    WindowValues<BilinearShift, kComponents> z;
    for (int k = 0; k < 2; ++k) at.ValuesOf(i, k, z[k]);
    rest[i] = Approach<kComponents>(z, at.u[i], at.v[i], steps.perNorth[i], steps.perEast[i],
                                    targetNorth[i], targetEast[i], north[i], east[i]);
  }

  WindowBlock<BilinearShift, kComponents> source;
  source.Place(grid, north, east, count);
  double found[kBatchBlock];
  for (std::size_t i = 0; i < count; ++i) {
    const bool sameCell = (source.part[i] == at.part[i]) & (source.firstNode[i] == at.firstNode[i]);
    const bool exact = rest[i] <= RestAllowed(targetNorth[i], targetEast[i]);
    found[i] = ((source.inside[i] == 1) & sameCell & exact) ? 1 : 0;
  }
  for (std::size_t i = 0; i < count; ++i)
    if (found[i] != 1)
      status[i] =
          SearchInverse<kComponents>(nodes, targetNorth[i], targetEast[i], north[i], east[i]);

  std::copy_n(north, count, point[0]);
  std::copy_n(east, count, point[1]);
  if constexpr (kComponents == 3) {
    source.Place(grid, north, east, count);
    source.Gather(grid, count);
    for (std::size_t i = 0; i < count; ++i) {
      const double up = source.Shift(i, 2);
      point[2][i] -= up;
      if (std::isnan(up) && HasResult(status[i])) status[i] = ShiftStatus::hole;
    }
  }
}

// Adds the shifts at the points, or takes them away: exact where the position stays.
template <class Rule, int kComponents>
void AddShifts(const ShiftNodes& nodes, double sign, double* const* point, std::size_t count,
               ShiftStatus* status) {
  constexpr int kFirst = kComponents == 1 ? 2 : 0;
  WindowBlock<Rule, kComponents> at;
  at.Place(nodes.grid, point[0], point[1], count);
  at.Gather(nodes.grid, count);
  double sum[kBatchBlock];
  std::fill_n(sum, count, 0.0);
  for (int k = 0; k < kComponents; ++k) {
    double* GEOMATH_RESTRICT column = point[kFirst + k];
    const double offset = nodes.offset[kFirst + k];
    for (std::size_t i = 0; i < count; ++i) {
      const double shift = at.Shift(i, k);
      sum[i] += shift;
      column[i] += sign * (shift + offset);
    }
  }
  for (std::size_t i = 0; i < count; ++i) status[i] = StatusOf(at.inside[i], sum[i]);
}

// The slopes of one component in a loop that vectorises.
template <class Rule, int kComponents>
GEOMATH_INLINE void SurfaceOf(const WindowBlock<Rule, kComponents>& at, int k,
                              const double* GEOMATH_RESTRICT stepsPerNorth,
                              const double* GEOMATH_RESTRICT stepsPerEast,
                              double* GEOMATH_RESTRICT value, double* GEOMATH_RESTRICT alongNorth,
                              double* GEOMATH_RESTRICT alongEast, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    typename WindowBlock<Rule, kComponents>::Values z;
    at.ValuesOf(i, k, z);
    double perRow, perColumn;
    value[i] = Rule::At(z, at.u[i], at.v[i], perRow, perColumn);
    alongNorth[i] = perRow * stepsPerNorth[i];
    alongEast[i] = perColumn * stepsPerEast[i];
  }
}

template <class Rule, int kComponents>
GEOMATH_INLINE void FindSurface(const WindowBlock<Rule, kComponents>& at, const Steps& steps,
                                const NodeSurface& surface, std::size_t count,
                                ShiftStatus* status) {
  double sum[kBatchBlock];
  std::fill_n(sum, count, 0.0);
  for (int k = 0; k < kComponents; ++k) {
    SurfaceOf<Rule, kComponents>(at, k, steps.perNorth, steps.perEast, surface.value[k],
                                 surface.alongNorth[k], surface.alongEast[k], count);
    for (std::size_t i = 0; i < count; ++i) sum[i] += surface.value[k][i];
  }
  for (std::size_t i = 0; i < count; ++i) status[i] = StatusOf(at.inside[i], sum[i]);
}

template <int kComponents>
GEOMATH_INLINE void FindCells(const WindowBlock<BilinearShift, kComponents>& at, const Steps& steps,
                              const CellSurface& surface, std::size_t count) {
  for (int k = 0; k < kComponents; ++k)
    for (std::size_t i = 0; i < count; ++i) {
      float z[2][2];
      at.ValuesOf(i, k, z);
      double alongNorth, alongEast, twist;
      BilinearShift::At(z, at.u[i], at.v[i], alongNorth, alongEast, twist);
      surface.twist[k][i] = twist * steps.perNorth[i] * steps.perEast[i];
    }
  constexpr double kEverywhere = std::numeric_limits<double>::infinity();
  const auto room = [](double fraction) { return Smaller(fraction, 1 - fraction) - kEdgeSteps; };
  for (std::size_t i = 0; i < count; ++i) {
    const bool inside = at.inside[i] == 1;
    surface.roomNorth[i] = inside ? room(at.u[i]) / steps.perNorth[i] : kEverywhere;
    surface.roomEast[i] = inside ? room(at.v[i]) / steps.perEast[i] : kEverywhere;
  }
}

// No room beside parts that are asked before that of a point.
template <int kComponents>
GEOMATH_INLINE void LeaveEdges(const GridParts& grid,
                               const WindowBlock<BilinearShift, kComponents>& at,
                               const double* GEOMATH_RESTRICT north,
                               const double* GEOMATH_RESTRICT east, const CellSurface& surface,
                               std::size_t count) {
  double* const GEOMATH_RESTRICT room = surface.roomNorth;
  const Turn turn = grid.turn;
  for (std::size_t number = 0; number < grid.count; ++number) {
    const PartFrame part = grid.parts[number];
    const auto asked = static_cast<double>(number);
    const double reachN = surface.reach * part.stepsPerNorth;
    const double reachE = surface.reach * part.stepsPerEast;
    const double around = turn.length * part.stepsPerEast;
    for (std::size_t i = 0; i < count; ++i) {
      const PartPosition p = PositionIn(part, turn, north[i], east[i]);
      const bool along = (p.north >= -reachN) & (p.north <= part.rows - 1 + reachN);
      const bool across = (p.east >= -reachE) & (p.east <= part.columns - 1 + reachE);
      const bool pastTurn = (around > 0) & (p.east >= around - reachE);
      const bool before = (asked < at.part[i]) | (at.inside[i] != 1);
      room[i] = (along & (across | pastTurn) & before) ? 0 : room[i];
    }
  }
}

}  // namespace

template <class T, class Rule, int kComponents>
void ShiftKernel<T, Rule, kComponents>::Surface(const ShiftNodes& nodes, const double* north,
                                                const double* east, const NodeSurface& surface,
                                                std::size_t count, ShiftStatus* status) {
  WindowBlock<Rule, kComponents> at;
  at.Place(nodes.grid, north, east, count);
  at.Gather(nodes.grid, count);
  const Steps steps(nodes.grid, at, count);
  FindSurface<Rule, kComponents>(at, steps, surface, count, status);
}

template <class T, int kComponents>
void CellKernel<T, kComponents>::Surface(const ShiftNodes& nodes, const double* north,
                                         const double* east, const CellSurface& surface,
                                         std::size_t count, ShiftStatus* status) {
  WindowBlock<BilinearShift, kComponents> at;
  at.Place(nodes.grid, north, east, count);
  at.Gather(nodes.grid, count);
  const Steps steps(nodes.grid, at, count);
  FindSurface<BilinearShift, kComponents>(at, steps, surface, count, status);
  FindCells<kComponents>(at, steps, surface, count);
  LeaveEdges<kComponents>(nodes.grid, at, north, east, surface, count);
}

template <class T, class Rule, int kComponents>
void ShiftKernel<T, Rule, kComponents>::Values(const ShiftNodes& nodes, const double* north,
                                               const double* east, double* const* values,
                                               std::size_t count, ShiftStatus* status) {
  WindowBlock<Rule, kComponents> at;
  at.Place(nodes.grid, north, east, count);
  at.Gather(nodes.grid, count);
  for (std::size_t i = 0; i < count; ++i) {
    double sum = 0;
    for (int k = 0; k < kComponents; ++k) sum += values[k][i] = at.Shift(i, k);
    status[i] = StatusOf(at.inside[i], sum);
  }
}

template <class T, class Rule, int kComponents>
void ShiftKernel<T, Rule, kComponents>::Forward(const ShiftNodes& nodes, double* const* point,
                                                std::size_t count, ShiftStatus* status) {
  AddShifts<Rule, kComponents>(nodes, 1, point, count, status);
}

template <class T, class Rule, int kComponents>
void ShiftKernel<T, Rule, kComponents>::Inverse(const ShiftNodes& nodes, double* const* point,
                                                std::size_t count, ShiftStatus* status) {
  if constexpr (kComponents > 1 && std::is_same_v<Rule, BilinearShift>)
    InvertHorizontal<kComponents>(nodes, point, count, status);
  else
    AddShifts<Rule, kComponents>(nodes, -1, point, count, status);
}

template struct CellKernel<Target, 1>;
template struct CellKernel<Target, 2>;
template struct CellKernel<Target, 3>;
template struct ShiftKernel<Target, BilinearShift, 1>;
template struct ShiftKernel<Target, BilinearShift, 2>;
template struct ShiftKernel<Target, BilinearShift, 3>;
template struct ShiftKernel<Target, BiquadraticShift, 1>;
template struct ShiftKernel<Target, BiquadraticShift, 2>;
template struct ShiftKernel<Target, BiquadraticShift, 3>;

}  // namespace zel_cs::geomath
