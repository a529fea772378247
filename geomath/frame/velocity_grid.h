#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/base/ellipsoid.h"
#include "geomath/export.h"
#include "geomath/frame/dated_shift.h"
#include "geomath/shift/shift_grid.h"

namespace zel_cs::geomath {

class NodeGrid;

/// What the nodes of a velocity grid hold, in this order.
enum class VelocityComponents : unsigned char {
  northEast,    ///< two numbers: along the horizon; heights stay
  northEastUp,  ///< three
  geocentric,   ///< three: along X, Y, Z
};

/// What a VelocityGrid is made of.
struct VelocityGridDefinition {
  /// Turns X, Y, Z into the latitude and longitude of the look-up.
  Ellipsoid ellipsoid;
  VelocityComponents components = VelocityComponents::northEastUp;
  double unit = 0.001;  ///< metres a year in one unit of the values
  double epoch = 0;     ///< decimal year of the positions on the source side
  YearRange years;      ///< the dates for which the velocities hold
  /// Latitudes and longitudes, radians.
  std::vector<ShiftGridPart> parts;
};

/// Velocities of points, interpolated bilinearly in a grid of latitude and longitude, in one
/// geocentric frame: Forward leads from the position at the epoch to that at the date,
///     X(t) = X(t₀) + (t − t₀)·V(φ, λ),
/// with the velocity at the position of the epoch. Parts, edges and holes are as in ShiftGrid.
///
/// Inverse, from the date to the epoch, is exact to the rounding of the coordinates. Where the
/// position at the date lies outside of the grid it is refused, also in the strip of some centimetres
/// that has moved out of it.
class GEOMATH_API VelocityGrid : public DatedShift {
 public:
  /// Null when the definition is not sound, as ShiftGrid::Make, or the epoch is not finite, or the
  /// ellipsoid has no positive semi-major axis. `reason`, when given, then says which.
  static std::unique_ptr<VelocityGrid> Make(VelocityGridDefinition definition,
                                            std::string* reason = nullptr) noexcept;
  ~VelocityGrid() override;

  /// The decimal year of positions on the source side.
  double Epoch() const { return epoch_; }

 private:
  VelocityGrid(const VelocityGridDefinition& definition, std::unique_ptr<const NodeGrid> nodes);

  void ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void DifferentiateAt(const double* const (&source)[3], const double* dates, std::size_t count,
                       double* const (&jacobian)[9], ShiftStatus* status) const override;

  Ellipsoid ellipsoid_;
  VelocityComponents components_;
  double epoch_;
  std::unique_ptr<const NodeGrid> nodes_;
};

}  // namespace zel_cs::geomath
