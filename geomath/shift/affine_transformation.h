#pragma once

#include "geomath/export.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// The affine parametric transformation (EPSG method 9624) of plane coordinates,
///     E' = A0 + A1·E + A2·N,    N' = B0 + B1·E + B2·N;
/// heights stay. A set with A1·B2 = A2·B1 has no inverse: Inverse refuses every point as
/// ShiftStatus::notInvertible.
class GEOMATH_API AffineTransformation : public CoordinateShift {
 public:
  /// The published parameters.
  struct Parameters {
    /// By their names.
    double a0 = 0, a1 = 1, a2 = 0;
    double b0 = 0, b1 = 0, b2 = 1;
  };
  /// Any finite set.
  explicit AffineTransformation(const Parameters& parameters)
      : CoordinateShift(ShiftSpace::plane), p_(parameters) {}

 private:
  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void DifferentiateBlock(const double* const (&source)[3], const double* dates, std::size_t count,
                          double* const (&jacobian)[9], ShiftStatus* status) const override;

  Parameters p_;
};

}  // namespace zel_cs::geomath
