#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/export.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// Vertical offset and slope (EPSG method 1046): heights of two national levellings that differ by
/// an offset and an inclined plane around an evaluation point φ0, λ0,
///     target = source + A + ζφ·ρ0·(φ − φ0) + ζλ·ν0·(λ − λ0)·cos φ,
/// ρ0 and ν0 the radii of curvature there. Positions stay.
class GEOMATH_API VerticalSlope : public CoordinateShift {
 public:
  /// The parameters: radians and metres.
  struct Parameters {
    /// The evaluation point.
    double latitude0 = 0, longitude0 = 0;
    double offset = 0;          ///< A, metres
    double slopeLatitude = 0;   ///< ζφ, the inclination along meridians
    double slopeLongitude = 0;  ///< ζλ, the inclination along parallels
  };
  /// The ellipsoid gives the radii of curvature; it is not kept.
  VerticalSlope(const Ellipsoid& ellipsoid, const Parameters& parameters);

 private:
  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  ShiftStatus Differentiate(const double (&source)[3], double date,
                            double (&jacobian)[3][3]) const override;
  double FromPoint(double l) const;
  double At(double b, double l) const;

  Parameters p_;
  double metresPerLatitude_, metresPerLongitude_;  // of height, ζφ·ρ0 and ζλ·ν0
};

}  // namespace zel_cs::geomath
