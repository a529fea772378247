#pragma once

#include <cstddef>

#include "geomath/base/axis_rotation.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/export.h"
#include "geomath/platform/in_place.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

class Similarity;

/// Who defined a datum. Other values are stored and returned as given.
enum userType : unsigned char {
  userTypeLibrary = 0,
  userTypeUser = 1,
  userTypeExternal = 2,
};

/// A local geodetic datum: a reference ellipsoid bound to a seven-parameter similarity between its
/// geocentric frame and that of WGS84 (Helmert; exact rotation matrix). Being an AxisRotation it
/// takes and gives latitude and longitude in the caller's axis order.
///
/// Parameters describe local → WGS84: WGS84 = T + (1 + s)·Rᵀ·local. Published coordinate-frame
/// tables for local → WGS84 (EPSG method 1032) go in unchanged; position-vector tables for the
/// same direction (EPSG method 1033) with their rotations negated.
///
/// Units: metres, arc-seconds for the rotations, radians for latitude and longitude; the scale is
/// the dimensionless s (1e-6 is 1 ppm). The ellipsoid is not owned and may be null. Const
/// operations are safe from many threads at once and allocate nothing.
class GEOMATH_API Datum : public AxisRotation {
 public:
  /// All parameters 0, user-defined, axes north and east.
  Datum(Ellipsoid* e);
  /// `axes` is an axes string as of AxisRotation, not a display name; null for north and east.
  Datum(Ellipsoid* e, const TAbstractPoint3<double>& shift, const TAbstractPoint3<double>& rotation,
        double scale, userType user, bool transformDisabled, const wchar_t* axes);
  /// The same from single numbers, not disabled.
  Datum(Ellipsoid* e, double dX, double dY, double dZ, double rX, double rY, double rZ,
        double scale, userType user, const wchar_t* axes);
  /// Copies share the ellipsoid.
  Datum(const Datum& other);
  /// Likewise; the axes follow the rule of AxisRotation.
  Datum& operator=(const Datum& other);
  ~Datum() override;

  void SetAxes(const wchar_t* axes) override;
  const wchar_t* GetAxes() const override;
  /// The direction code of AxisRotation.
  virtual unsigned char GetNEDir() const;

  /// In place, local (X, Y, Z) to WGS84 (X, Y, Z). False, arguments unchanged, when the
  /// transformation is disabled. With all parameters 0 the point keeps every bit.
  bool ToWGS84Datum(TAbstractPoint3<double>& p) const;
  bool ToWGS84Datum(double& X, double& Y, double& Z) const;

  /// In place, WGS84 (X, Y, Z) to local (X, Y, Z): the exact inverse, with the same results.
  bool ToLocalDatum(TAbstractPoint3<double>& p) const;
  bool ToLocalDatum(double& X, double& Y, double& Z) const;

  /// In place, geodetic in the caller's axis order to geocentric on this datum's ellipsoid.
  /// False when the ellipsoid is null. Kept: B and L have then been turned to internal order.
  bool BLH_to_XYZ(double& B, double& L, double& H) const;
  /// The same; the point is unchanged on failure.
  bool BLH_to_XYZ(TAbstractPoint3<double>& p) const;

  /// In place, geocentric to geodetic in the caller's axis order. False, arguments unchanged, when
  /// the ellipsoid is null or Ellipsoid::XYZ_to_BLH refuses the point.
  bool XYZ_to_BLH(double& X, double& Y, double& Z) const;
  bool XYZ_to_BLH(TAbstractPoint3<double>& p) const;

  /// The derivatives of ToLocalDatum, R/(1 + s), the same everywhere; rows are local coordinates.
  void ToLocalDerivatives(double (&derivatives)[3][3]) const;

  /// True when all seven parameters are exactly 0.
  bool IsNull() const { return isNull_; }

  /// Whether both transformations are refused.
  bool IsTransformDisabled() const { return transformDisabled_; }

  /// Who defined the datum, a userType; carried along only.
  unsigned char getUser() const { return user_; }
  void setUser(unsigned char user) { user_ = user; }
  bool isUserDefined() const { return user_ == userTypeUser; }
  bool isExternal() const { return user_ == userTypeExternal; }

  /// The parameters as given: metres, arc-seconds, dimensionless.
  const TAbstractPoint3<double>& Shift() const { return shift_; }
  const TAbstractPoint3<double>& Rotation() const { return rotation_; }
  double Scale() const { return scaleChange_; }
  const Ellipsoid* GetEllipsoid() const { return ellipsoid_; }

  /// ToWGS84Datum of `count` points in place; the coordinates of point i stand at index
  /// i * stride. A point without finite result becomes NaN in all three slots (every point does,
  /// when the transformation is disabled). Returns the number of points converted.
  std::size_t ToWGS84DatumBatch(double* X, double* Y, double* Z, std::size_t count,
                                std::ptrdiff_t stride = 1) const;
  /// ToLocalDatum of `count` points, likewise.
  std::size_t ToLocalDatumBatch(double* X, double* Y, double* Z, std::size_t count,
                                std::ptrdiff_t stride = 1) const;

 private:
  template <class Conversion>
  std::size_t TransformBatch(const Conversion& conversion, double* X, double* Y, double* Z,
                             std::size_t count, std::ptrdiff_t stride) const;

  TAbstractPoint3<double> shift_;
  TAbstractPoint3<double> rotation_;
  double scaleChange_;
  bool transformDisabled_, isNull_;
  Ellipsoid* ellipsoid_;
  unsigned char user_;
  InPlace<Similarity, 24> similarity_;  // of the seven parameters
};

}  // namespace zel_cs::geomath
