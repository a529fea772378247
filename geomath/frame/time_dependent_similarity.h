#pragma once

#include "geomath/export.h"
#include "geomath/frame/dated_shift.h"
#include "geomath/platform/in_place.h"
#include "geomath/platform/zel_math.h"
#include "geomath/shift/small_angle_similarity.h"

namespace zel_cs::geomath {

struct RunningSimilarity;

/// Seven parameters, what each grows by in a year, and the date at which they hold: metres,
/// arc-seconds, and the dimensionless difference of the scale from 1 (1e-9 is 1 ppb).
struct TimeDependentParameters {
  TAbstractPoint3<double> shift{0, 0, 0};               ///< metres
  TAbstractPoint3<double> rotation{0, 0, 0};            ///< arc-seconds
  double scale = 0;                                     ///< less 1
  TAbstractPoint3<double> shiftRate{0, 0, 0};           ///< metres a year
  TAbstractPoint3<double> rotationRate{0, 0, 0};        ///< arc-seconds a year
  double scaleRate = 0;                                 ///< a year
  double epoch = 0;                                     ///< decimal year
  RotationSense sense = RotationSense::positionVector;  ///< of the rotations
};

/// Seven parameters that run with time, P(t) = P + P′·(t − t₀), between geocentric reference frames,
/// with the rotation matrix of small angles by which such sets are defined (EPSG methods 1053 and
/// 1056; Petit and Luzum 2010, IERS Conventions, section 4.2):
///     target = T + (1 + s)·R·source,    R = I + [r]×  in the position-vector sense,
/// all at the date of the position. Inverse solves the equations, which changed signs do not: for
/// the rotations of NAD83 they are 0.1 µm off.
class GEOMATH_API TimeDependentSimilarity : public DatedShift {
 public:
  /// From the source to the target frame.
  explicit TimeDependentSimilarity(const TimeDependentParameters& parameters)
      : TimeDependentSimilarity(parameters, ShiftKind::frameChange) {}

 protected:
  /// For a class that is this similarity in another role.
  TimeDependentSimilarity(const TimeDependentParameters& parameters, ShiftKind kind);

 private:
  friend class FrameChange;  // runs several over a block

  void ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void DifferentiateAt(const double* const (&source)[3], const double* dates, std::size_t count,
                       double* const (&jacobian)[9], ShiftStatus* status) const override;
  /// Converts the columns of matrices, which are given number by number, row by row.
  void Turn(bool inverse, double* const (&matrix)[9], const double* dates, std::size_t count) const;

  InPlace<RunningSimilarity, 15> similarity_;
};

}  // namespace zel_cs::geomath
