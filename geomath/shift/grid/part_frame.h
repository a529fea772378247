#pragma once

#include <cstddef>
#include <cstdint>

#include "geomath/simd/kernel.h"
#include "geomath/simd/rounding.h"

/// Where a point stands among the nodes of nested grids: plain records and formulas without a call,
/// which one point and columns of points share.
namespace zel_cs::geomath {

/// How far outside its edge, in steps, a point still counts as on the edge of a grid: the rounding of
/// coordinates that went through other units.
inline constexpr double kEdgeSteps = 1e-9;

/// The geometry of one grid: nodes row by row to the north, from west to east.
struct PartFrame {
  double south, west;                  // of the first node
  double stepsPerNorth, stepsPerEast;  // steps in a unit of the coordinates
  double rows, columns;
  double firstNode;  // its number among the nodes of all parts
};

/// A position in steps from the first node of a part.
struct PartPosition {
  double north, east;
};

/// Differences of longitude in one turn from a western edge on. A lattice in a plane has no turn.
struct Turn {
  double length = 0, perLength = 0;

  GEOMATH_INLINE double Reduce(double fromWest) const {
    constexpr double kMargin = 1e-11;  // on the western edge, but for its rounding
    return fromWest - length * RoundDown((fromWest + kMargin) * perLength);
  }
};

GEOMATH_INLINE PartPosition PositionIn(const PartFrame& part, const Turn& turn, double north,
                                       double east) {
  return {(north - part.south) * part.stepsPerNorth,
          turn.Reduce(east - part.west) * part.stepsPerEast};
}

/// Whether a position is in the part, edges and their rounding included. False for NaN.
GEOMATH_INLINE bool Holds(const PartFrame& part, const PartPosition& at) {
  const bool along = (at.north >= -kEdgeSteps) & (at.north <= part.rows - 1 + kEdgeSteps);
  const bool across = (at.east >= -kEdgeSteps) & (at.east <= part.columns - 1 + kEdgeSteps);
  return along & across;
}

/// Whether a position is in the part without its northern and western edge, which belong to the
/// neighbour there, rounding included.
GEOMATH_INLINE bool Owns(const PartFrame& part, const PartPosition& at) {
  const bool along = (at.north >= -kEdgeSteps) & (at.north < part.rows - 1 - kEdgeSteps);
  const bool across = (at.east > kEdgeSteps) & (at.east <= part.columns - 1 + kEdgeSteps);
  return along & across;
}

/// x brought into [0, last]; 0 for NaN.
GEOMATH_INLINE double IntoAxis(double x, double last) {
  const double notBefore = x > 0 ? x : 0;
  return notBefore < last ? notBefore : last;
}

/// A raster over all parts. A cell lists the parts that reach into it, the one to be asked first
/// first, and none behind one that owns all of the cell.
struct PartRaster {
  double south, west;
  double rowsPerUnit, columnsPerUnit;
  double lastRow, lastColumn;
  const std::uint32_t* starts;  // where the list of a cell starts in `listed`, row by row
  const std::uint32_t* listed;
};

inline constexpr std::uint32_t kNoPart = ~std::uint32_t{0};

/// Nested grids as a kernel sees them.
struct GridParts {
  const PartFrame* parts;
  std::size_t count;
  Turn turn;
  PartRaster raster;
  const float* nodes;  // the components of a node stand side by side

  /// The part that a point belongs to: the first that owns it, or else the first that holds it;
  /// kNoPart outside all.
  GEOMATH_INLINE std::uint32_t Find(double north, double east) const {
    const double row = RoundDown((north - raster.south) * raster.rowsPerUnit);
    const double column = RoundDown(turn.Reduce(east - raster.west) * raster.columnsPerUnit);
    const auto cell =
        static_cast<std::size_t>(IntoAxis(row, raster.lastRow) * (raster.lastColumn + 1) +
                                 IntoAxis(column, raster.lastColumn));
    const std::uint32_t* const end = raster.listed + raster.starts[cell + 1];
    std::uint32_t holder = kNoPart;
    for (const std::uint32_t* p = raster.listed + raster.starts[cell]; p != end; ++p) {
      const PartPosition at = PositionIn(parts[*p], turn, north, east);
      if (Owns(parts[*p], at)) return *p;
      if (holder == kNoPart && Holds(parts[*p], at)) holder = *p;
    }
    return holder;
  }
};

}  // namespace zel_cs::geomath
