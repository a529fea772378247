#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/base/ellipsoid.h"
#include "geomath/export.h"
#include "geomath/shift/coordinate_shift.h"
#include "geomath/shift/shift_grid.h"

namespace zel_cs::geomath {

/// In which system a geocentric grid is looked up.
enum class GridPosition : unsigned char {
  source,  ///< at the point that Forward is given
  target,  ///< at the point that Forward gives
};

/// What a GeocentricShiftGrid is made of.
struct GeocentricShiftGridDefinition {
  /// Turns X, Y, Z of the system of `position` into the latitude and longitude of the look-up.
  Ellipsoid ellipsoid;
  GridPosition position = GridPosition::source;
  double unit = 1;                   ///< metres in one unit of the values
  std::vector<ShiftGridPart> parts;  ///< three values in a node: X, Y, Z
};

/// Geocentric translations that are interpolated bilinearly in a grid of latitude and longitude:
/// target = source + T(φ, λ), as France defines its system RGF93 from NTF by the grid GR3DF97A (there
/// the position is the target's, EPSG method 9655). Parts, edges and holes are as in ShiftGrid.
///
/// The direction whose position is the given point is evaluated directly, the other one by a fixed
/// number of rounds; each leaves the slope of the translations (parts per 100,000) of the rest. A
/// point whose last round changed it by more than 0.01 µm is refused as ShiftStatus::notInvertible.
class GEOMATH_API GeocentricShiftGrid : public CoordinateShift {
 public:
  /// Null when the definition is not sound, as ShiftGrid::Make, or the ellipsoid has no positive
  /// semi-major axis.
  static std::unique_ptr<GeocentricShiftGrid> Make(GeocentricShiftGridDefinition definition,
                                                   std::string* reason = nullptr) noexcept;
  ~GeocentricShiftGrid() override;

 private:
  GeocentricShiftGrid(const GeocentricShiftGridDefinition& definition,
                      std::unique_ptr<const NodeGrid> nodes);

  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  ShiftStatus Differentiate(const double (&source)[3], double date,
                            double (&jacobian)[3][3]) const override;
  void AddAtPoint(double sign, double* const (&point)[3], std::size_t count,
                  ShiftStatus* status) const;
  void AddAtResult(double sign, double* const (&point)[3], std::size_t count,
                   ShiftStatus* status) const;

  Ellipsoid ellipsoid_;
  GridPosition position_;
  std::unique_ptr<const NodeGrid> nodes_;
};

}  // namespace zel_cs::geomath
