#pragma once

#include "geomath/base/ellipsoid.h"
#include "geomath/datum/datum.h"
#include "geomath/export.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// Seven parameters for positions alone: every point goes through the datum at one ellipsoidal
/// height, whatever its own is, which it keeps. The Netherlands define their system so (RDNAPTRANS
/// 2018, at 43 m), that a position does not depend on a height.
///
/// Forward leads from the global ellipsoid to that of the datum. Inverse finds the position whose
/// height on the global ellipsoid is the fixed one.
class GEOMATH_API FixedHeightDatum : public CoordinateShift {
 public:
  /// `height` in metres above `global`. Both objects are copied, but for the datum's ellipsoid,
  /// which must outlive this object.
  FixedHeightDatum(const Ellipsoid& global, const Datum& datum, double height)
      : CoordinateShift(ShiftSpace::geographic), global_(global), datum_(datum), height_(height) {}

  /// The fixed height, metres.
  double Height() const { return height_; }

 private:
  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void DifferentiateBlock(const double* const (&source)[3], const double* dates, std::size_t count,
                          double* const (&jacobian)[9], ShiftStatus* status) const override;

  Ellipsoid global_;
  Datum datum_;
  double height_;
};

}  // namespace zel_cs::geomath
