#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/export.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

class NodeGrid;

/// What the nodes of a shift grid hold, in this order.
enum class ShiftComponents : unsigned char {
  vertical,               ///< one number: height
  horizontal,             ///< two: north, east
  horizontalAndVertical,  ///< three: north, east, height
};

/// How a shift grid is interpolated between its nodes.
enum class ShiftInterpolation : unsigned char {
  bilinear,     ///< between the four nodes around the point
  biquadratic,  ///< over nine nodes, the rule of NADCON 5 (NOAA Technical Memorandum NOS NGS 84)
};

/// One grid of nodes; several of them may be nested or stand side by side. Positions are those of
/// the grid's space: radians north and east positive, or metres.
struct ShiftGridPart {
  /// For reports.
  std::string name;
  /// 0 for a grid on its own, 1 for one inside of that, and so on.
  int level = 0;
  /// The first node.
  double south = 0, west = 0;
  /// Between rows and between columns, positive.
  double northStep = 0, eastStep = 0;
  /// At least 2 each, 3 for the biquadratic rule.
  int rows = 0, columns = 0;
  /// Rows from the south, from west to east in a row, the components of a node side by side; NaN is
  /// a hole.
  std::vector<float> values;
  /// As values, or empty.
  std::vector<float> accuracies;
};

/// What a ShiftGrid is made of.
struct ShiftGridDefinition {
  /// Geographic, or plane.
  ShiftSpace space = ShiftSpace::geographic;
  /// What the nodes hold, and how they are interpolated.
  ShiftComponents components = ShiftComponents::horizontal;
  ShiftInterpolation interpolation = ShiftInterpolation::bilinear;
  /// Radians or metres in one unit of north and east values, metres in one of height values.
  double horizontalUnit = 1, verticalUnit = 1;
  /// Added to every shifted point, in the unit of the space.
  double northOffset = 0, eastOffset = 0;
  /// In any order.
  std::vector<ShiftGridPart> parts;
};

/// A shift that is interpolated in a grid of nodes at the position of the source point: target =
/// source + shift(source) + offset. Horizontal datum grids (NTv2, NADCON, NADCON 5), grids between
/// height systems, and grids on the lattice of a projection. Nodes are held in single precision, in
/// radians and metres: 6 µm of a shift of 100 m.
///
/// Among several parts the one of the highest level that a point lies in counts. Its northern and
/// western edges belong to the neighbour there, so that the answer on an edge does not depend on the
/// order of parts; on the outer edge they belong to the part. Where parts of one level overlap, the
/// finer one counts. A point outside of all parts is refused, and so is one whose window of nodes
/// has a hole.
///
/// Inverse is the true inverse: Forward takes the result back to the given point within a few units
/// in the last place of its coordinates (1e-4 mm and less), also where target and source lie in
/// different cells or parts, or the target just outside. Where parts do not meet, a strip as wide as
/// their difference may have no point that is shifted there: it is refused as
/// ShiftStatus::notInvertible. A target in a hole is refused wherever its source may be.
/// Biquadratic grids are the exception: their publisher's inverse subtracts the shift at the target,
/// once, and does not iterate.
class GEOMATH_API ShiftGrid : public CoordinateShift {
 public:
  /// Limits of Make.
  static constexpr int kMaxParts = 4096;

  /// Makes a grid. Null when the definition is not sound: no part or more than kMaxParts, the space
  /// is geocentric, a position, step or unit that is not finite or a step that is not positive,
  /// latitudes beyond a pole, more than one turn, sizes that do not fit, a horizontal offset where
  /// nothing horizontal is shifted or beside the biquadratic rule, a value that is infinite, no
  /// memory. `reason`, when given, then says which.
  static std::unique_ptr<ShiftGrid> Make(ShiftGridDefinition definition,
                                         std::string* reason = nullptr) noexcept;
  ~ShiftGrid() override;

  /// What the nodes hold, and how they are interpolated.
  ShiftComponents Components() const { return components_; }
  ShiftInterpolation Interpolation() const { return interpolation_; }

  /// Whether all parts have accuracies.
  bool HasAccuracies() const;

  /// The accuracies at a source position, interpolated bilinearly, in the unit in which the nodes
  /// state them; as many numbers as the nodes have components (up to three). False, nothing written,
  /// outside or without accuracies.
  bool Accuracy(double first, double second, double* accuracies) const;

 private:
  ShiftGrid(const ShiftGridDefinition& definition, std::unique_ptr<NodeGrid> nodes);

  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void DifferentiateBlock(const double* const (&source)[3], const double* dates, std::size_t count,
                          double* const (&jacobian)[9], ShiftStatus* status) const override;

  ShiftComponents components_;
  ShiftInterpolation interpolation_;
  std::unique_ptr<const NodeGrid> nodes_;
};

}  // namespace zel_cs::geomath
