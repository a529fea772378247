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

GEOMATH_INLINE double RestAllowed(double north, double east) {
  return kRestPerUnit * Larger(1, Larger(std::abs(north), std::abs(east)));
}

// Where the value of a point comes from: its window and the point's position in it.
struct Window {
  double part;
  double firstNode;
  double u, v;
};

template <class Rule>
GEOMATH_INLINE Window PlaceIn(const PartFrame& part, double number, const PartPosition& at) {
  const AxisWindow row = Rule::Place(IntoAxis(at.north, part.rows - 1), part.rows);
  const AxisWindow column = Rule::Place(IntoAxis(at.east, part.columns - 1), part.columns);
  const double firstNode = part.firstNode + row.first * part.columns + column.first;
  return {number, firstNode, row.fraction, column.fraction};
}

// Shifts of single points.
template <class Rule, int kComponents>
struct Shifter {
  static constexpr int kSize = Rule::kSize;
  using Values = float[kSize][kSize];

  const ShiftNodes& nodes;

  GEOMATH_INLINE const PartFrame& PartOf(const Window& window) const {
    return nodes.grid.parts[static_cast<std::size_t>(window.part)];
  }

  GEOMATH_INLINE void Read(const Window& window, Values (&z)[kComponents]) const {
    const auto rowLength = static_cast<std::ptrdiff_t>(PartOf(window).columns) * kComponents;
    const float* row =
        nodes.grid.nodes + static_cast<std::ptrdiff_t>(window.firstNode) * kComponents;
    for (int r = 0; r < kSize; ++r, row += rowLength)
      for (int c = 0; c < kSize; ++c)
        for (int k = 0; k < kComponents; ++k) z[k][r][c] = row[c * kComponents + k];
  }

  GEOMATH_INLINE void Shift(const Window& at, double (&shift)[kComponents]) const {
    Values z[kComponents];
    Read(at, z);
    for (int k = 0; k < kComponents; ++k) shift[k] = Rule::At(z[k], at.u, at.v);
  }

  // One step of Newton's method for p + shift(p) = target, whose Jacobian is I + ∂shift/∂p. Returns
  // what it leaves in the same cell: the larger twist times the area of the step in cells.
  GEOMATH_INLINE double Approach(const Window& at, double targetNorth, double targetEast,
                                 double& north, double& east) const {
    Values z[kComponents];
    Read(at, z);
    const PartFrame& part = PartOf(at);
    double nn, ne, twistN, en, ee, twistE;
    const double sN = Rule::At(z[0], at.u, at.v, nn, ne, twistN);
    const double sE = Rule::At(z[1], at.u, at.v, en, ee, twistE);
    const double perNorth = part.stepsPerNorth, perEast = part.stepsPerEast;
    nn = 1 + nn * perNorth;
    ne = ne * perEast;
    en = en * perNorth;
    ee = 1 + ee * perEast;
    const double restN = targetNorth - north - sN, restE = targetEast - east - sE;
    const double perDeterminant = 1 / (nn * ee - ne * en);
    const double stepN = (restN * ee - restE * ne) * perDeterminant;
    const double stepE = (restE * nn - restN * en) * perDeterminant;
    north += stepN;
    east += stepE;
    const double area = stepN * perNorth * (stepE * perEast);
    return Larger(std::abs(twistN * area), std::abs(twistE * area));
  }
};

// A block of points in their windows. A point outside has the nearest window of some part.
template <class Rule>
struct PlacedBlock {
  double part[kBatchBlock], firstNode[kBatchBlock], u[kBatchBlock], v[kBatchBlock];
  double inside[kBatchBlock];  // 1 or 0: numbers of one width need no conversion

  GEOMATH_INLINE Window At(std::size_t i) const { return {part[i], firstNode[i], u[i], v[i]}; }

  GEOMATH_INLINE void Set(std::size_t i, const Window& window, bool isInside) {
    part[i] = window.part;
    firstNode[i] = window.firstNode;
    u[i] = window.u;
    v[i] = window.v;
    inside[i] = isInside ? 1 : 0;
  }

  // In a single grid the loop vectorises.
  GEOMATH_INLINE void Place(const GridParts& grid, const double* GEOMATH_RESTRICT north,
                            const double* GEOMATH_RESTRICT east, std::size_t count) {
    if (grid.count == 1) {
      const PartFrame only = *grid.parts;
      const Turn turn = grid.turn;
      for (std::size_t i = 0; i < count; ++i) {
        const PartPosition at = PositionIn(only, turn, north[i], east[i]);
        Set(i, PlaceIn<Rule>(only, 0, at), Holds(only, at));
      }
      return;
    }
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t found = grid.Find(north[i], east[i]);
      const std::uint32_t number = found == kNoPart ? 0 : found;
      const PartPosition at = PositionIn(grid.parts[number], grid.turn, north[i], east[i]);
      Set(i, PlaceIn<Rule>(grid.parts[number], number, at), found != kNoPart);
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
  const Shifter<BilinearShift, kComponents> shifter{nodes};
  const GridParts& grid = nodes.grid;
  std::uint32_t number = grid.Find(targetNorth, targetEast);
  if (number == kNoPart) number = NearestPart(nodes, targetNorth, targetEast);
  const double allowed = RestAllowed(targetNorth, targetEast);
  for (int round = 0; round < kMaxParts && number != kNoPart; ++round) {
    const PartFrame& part = grid.parts[number];
    north = targetNorth;
    east = targetEast;
    bool found = false;
    for (int step = 0; step < kMaxSteps && !found; ++step) {
      const auto place = [&] {
        return PlaceIn<BilinearShift>(part, number, PositionIn(part, grid.turn, north, east));
      };
      shifter.Approach(place(), targetNorth, targetEast, north, east);
      double shift[kComponents];
      shifter.Shift(place(), shift);
      if (std::isnan(shift[0]) || std::isnan(shift[1])) return ShiftStatus::hole;
      found = std::abs(targetNorth - north - shift[0]) <= allowed &&
              std::abs(targetEast - east - shift[1]) <= allowed;
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
  const Shifter<BilinearShift, kComponents> shifter{nodes};
  PlacedBlock<BilinearShift> at;
  double north[kBatchBlock], east[kBatchBlock];
  double targetNorth[kBatchBlock], targetEast[kBatchBlock];
  for (std::size_t i = 0; i < count; ++i) {
    targetNorth[i] = point[0][i] - nodes.offset[0];
    targetEast[i] = point[1][i] - nodes.offset[1];
  }

  // A fixed-point step leaves the shift times its slope, centimetres; Newton's method leaves next to
  // nothing, unless it leaves the cell.
  at.Place(nodes.grid, targetNorth, targetEast, count);
  for (std::size_t i = 0; i < count; ++i) {
    double shift[kComponents];
    shifter.Shift(at.At(i), shift);
    north[i] = targetNorth[i] - shift[0];
    east[i] = targetEast[i] - shift[1];
  }
  at.Place(nodes.grid, north, east, count);
  double rest[kBatchBlock];
  for (std::size_t i = 0; i < count; ++i)
    rest[i] = shifter.Approach(at.At(i), targetNorth[i], targetEast[i], north[i], east[i]);

  PlacedBlock<BilinearShift> source;
  source.Place(nodes.grid, north, east, count);
  double found[kBatchBlock];
  for (std::size_t i = 0; i < count; ++i) {
    const bool sameCell = (source.part[i] == at.part[i]) & (source.firstNode[i] == at.firstNode[i]);
    const bool exact = rest[i] <= RestAllowed(targetNorth[i], targetEast[i]);
    found[i] = (source.inside[i] == 1) & sameCell & exact ? 1 : 0;
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (found[i] == 1) continue;
    status[i] = SearchInverse<kComponents>(nodes, targetNorth[i], targetEast[i], north[i], east[i]);
  }
  if constexpr (kComponents == 3) source.Place(nodes.grid, north, east, count);
  for (std::size_t i = 0; i < count; ++i) {
    point[0][i] = north[i];
    point[1][i] = east[i];
    if constexpr (kComponents == 3) {
      double shift[kComponents];
      shifter.Shift(source.At(i), shift);
      point[2][i] -= shift[2];
      if (std::isnan(shift[2]) && HasResult(status[i])) status[i] = ShiftStatus::hole;
    }
  }
}

// Adds the shifts at the points, or takes them away: exact where the position stays.
template <class Rule, int kComponents>
void AddShifts(const ShiftNodes& nodes, double sign, double* const* point, std::size_t count,
               ShiftStatus* status) {
  constexpr int kFirst = kComponents == 1 ? 2 : 0;
  const Shifter<Rule, kComponents> shifter{nodes};
  PlacedBlock<Rule> at;
  at.Place(nodes.grid, point[0], point[1], count);
  for (std::size_t i = 0; i < count; ++i) {
    double shift[kComponents];
    shifter.Shift(at.At(i), shift);
    double sum = 0;
    for (int k = 0; k < kComponents; ++k) {
      sum += shift[k];
      point[kFirst + k][i] += sign * (shift[k] + nodes.offset[kFirst + k]);
    }
    status[i] = StatusOf(at.inside[i], sum);
  }
}

}  // namespace

template <class T, class Rule, int kComponents>
void ShiftKernel<T, Rule, kComponents>::Values(const ShiftNodes& nodes, const double* north,
                                               const double* east, double* const* values,
                                               std::size_t count, ShiftStatus* status) {
  const Shifter<Rule, kComponents> shifter{nodes};
  PlacedBlock<Rule> at;
  at.Place(nodes.grid, north, east, count);
  for (std::size_t i = 0; i < count; ++i) {
    double shift[kComponents];
    shifter.Shift(at.At(i), shift);
    double sum = 0;
    for (int k = 0; k < kComponents; ++k) sum += values[k][i] = shift[k];
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

template struct ShiftKernel<Target, BilinearShift, 1>;
template struct ShiftKernel<Target, BilinearShift, 2>;
template struct ShiftKernel<Target, BilinearShift, 3>;
template struct ShiftKernel<Target, BiquadraticShift, 1>;
template struct ShiftKernel<Target, BiquadraticShift, 2>;
template struct ShiftKernel<Target, BiquadraticShift, 3>;

}  // namespace zel_cs::geomath
