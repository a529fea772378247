#pragma once

#include "geomath/export.h"
#include "geomath/frame/dated_shift.h"
#include "geomath/platform/zel_math.h"
#include "geomath/shift/small_angle_similarity.h"

namespace zel_cs::geomath {

/// Seven parameters that hold at one date (EPSG methods 1065 and 1066): SmallAngleSimilarity for
/// positions at that date. Other dates are refused as ShiftStatus::otherDate.
class GEOMATH_API TimeSpecificSimilarity : public DatedShift {
 public:
  /// By how many years a date may differ: epochs are published to the hundredth of a year, in which
  /// the fastest points on the Earth move by a millimetre.
  static constexpr double kSameEpoch = 0.005;

  /// As SmallAngleSimilarity, at a decimal year.
  TimeSpecificSimilarity(const TAbstractPoint3<double>& shift,
                         const TAbstractPoint3<double>& rotation, double scale, RotationSense sense,
                         double epoch)
      : DatedShift(ShiftSpace::geocentric, ShiftKind::frameChange,
                   {epoch - kSameEpoch, epoch + kSameEpoch}),
        similarity_(shift, rotation, scale, sense) {}

 private:
  void ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void DifferentiateAt(const double* const (&source)[3], const double* dates, std::size_t count,
                       double* const (&jacobian)[9], ShiftStatus* status) const override;

  SmallAngleSimilarity similarity_;
};

}  // namespace zel_cs::geomath
