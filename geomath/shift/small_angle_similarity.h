#pragma once

#include "geomath/export.h"
#include "geomath/platform/zel_math.h"
#include "geomath/shift/coordinate_shift.h"

namespace zel_cs::geomath {

/// The two senses in which rotations are published.
enum class RotationSense : unsigned char {
  positionVector,   ///< of the position vector (EPSG methods 1033, 9606, 1061)
  coordinateFrame,  ///< of the coordinate frame: the other sign (EPSG methods 1032, 9607, 1034)
};

/// Seven parameters between geocentric systems with the rotation matrix of small angles, as the EPSG
/// registry defines its methods 1032, 1033, 9606 and 9607:
///     target = T + (1 + s)·R·source,    R = I + [r]×  in the position-vector sense.
/// R is no rotation: at 20 seconds it stretches by 5e-9, 3 cm on the Earth, which the published sets
/// count on. Inverse solves the equations; it does not change signs. Datum is the exact form.
class GEOMATH_API SmallAngleSimilarity : public CoordinateShift {
 public:
  /// Metres, arc-seconds, and the dimensionless s (1e-6 is 1 ppm).
  SmallAngleSimilarity(const TAbstractPoint3<double>& shift,
                       const TAbstractPoint3<double>& rotation, double scale, RotationSense sense)
      : SmallAngleSimilarity(shift, rotation, {0, 0, 0}, scale, sense) {}

 protected:
  /// With the rotations about a pivot P: target = P + T + (1 + s)·R·(source − P).
  SmallAngleSimilarity(const TAbstractPoint3<double>& shift,
                       const TAbstractPoint3<double>& rotation,
                       const TAbstractPoint3<double>& pivot, double scale, RotationSense sense);

 private:
  /// p ↦ p + m·(p − centre) + shift: only the last sum rounds p.
  struct Map {
    double m[3][3];
    double centre[3], shift[3];
    void Convert(double* const (&point)[3], std::size_t count) const;
  };

  void ForwardBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void InverseBlock(double* const (&point)[3], std::size_t count,
                    ShiftStatus* status) const override;
  void DifferentiateBlock(const double* const (&source)[3], const double* dates, std::size_t count,
                          double* const (&jacobian)[9], ShiftStatus* status) const override;

  Map forward_, inverse_;
};

/// The Molodensky-Badekas transformation (EPSG methods 1034 and 1061): seven parameters with
/// small-angle rotations about a published pivot, which takes part in the transformation.
class GEOMATH_API MolodenskyBadekas : public SmallAngleSimilarity {
 public:
  /// As SmallAngleSimilarity; the pivot in the source system, metres.
  MolodenskyBadekas(const TAbstractPoint3<double>& shift, const TAbstractPoint3<double>& rotation,
                    const TAbstractPoint3<double>& pivot, double scale, RotationSense sense)
      : SmallAngleSimilarity(shift, rotation, pivot, scale, sense) {}
};

}  // namespace zel_cs::geomath
