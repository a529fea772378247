#pragma once

#include "geomath/datum/datum.h"
#include "geomath/export.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

/// A datum given by the ten Molodensky-Badekas parameters: those of Datum and the point about which
/// the rotations were determined, geocentric in metres.
///
/// Kept: the transformations are those of Datum, with the rotations about the centre of the earth;
/// the origin point is carried along and counts in IsNull only. A set that was determined about
/// its origin (EPSG methods 1034 and 1061) therefore has to be given with the translation that
/// belongs to rotations about the centre.
class GEOMATH_API DatumMolodenskiy : public Datum {
 public:
  /// All parameters and the origin 0, user-defined, axes north and east.
  DatumMolodenskiy(Ellipsoid* e);
  /// Units and axes string as in Datum.
  DatumMolodenskiy(Ellipsoid* e, const TAbstractPoint3<double>& shift,
                   const TAbstractPoint3<double>& rotation, const TAbstractPoint3<double>& origin,
                   double scale, unsigned char user, bool transformDisabled, const wchar_t* axes);
  /// The same from single numbers, not disabled.
  DatumMolodenskiy(Ellipsoid* e, double dX, double dY, double dZ, double rX, double rY, double rZ,
                   double X0, double Y0, double Z0, double scale, unsigned char user,
                   const wchar_t* axes);
  /// Copies share the ellipsoid.
  DatumMolodenskiy(const DatumMolodenskiy& other);
  /// Likewise; the axes follow the rule of AxisRotation.
  DatumMolodenskiy& operator=(const DatumMolodenskiy& other);
  ~DatumMolodenskiy() override;

  /// True when all seven parameters and the origin are exactly 0.
  bool IsNull() const;

  /// The origin of the rotations as given, metres.
  const TAbstractPoint3<double>& Origin() const { return origin_; }

 private:
  TAbstractPoint3<double> origin_;
};

}  // namespace zel_cs::geomath
