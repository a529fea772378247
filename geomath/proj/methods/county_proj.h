#pragma once

#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// The twelve parameters of a county grid, in index order. Radians and metres.
struct CountyParams {
  /// Longitude and latitude of the origin.
  double lonOrigin, latOrigin;
  /// Standard parallels of a cone.
  double northStdP, southStdP;
  double scale;  ///< on the central line
  /// False northing and easting.
  double fNorth, fEast;
  /// Semi-axes of the design ellipsoid.
  double desElA, desElB;
  double elevationShift;  ///< height of the county above the geoid
  double obliqueAngle;    ///< azimuth of an oblique central line at the origin
  double geoidHeight;     ///< of the county

  /// The values of a county grid that nobody has set up: 1 for the southern parallel, the
  /// WGS84 major axis for both design axes (a sphere), 0 for the rest.
  static CountyParams NotSetUp();
};

/// What the county grids of Minnesota and Wisconsin share (county coordinate systems of the state
/// transportation departments): the parameters, and a working ellipsoid that is lifted to the
/// county's terrain so that grid and ground distances agree.
///
/// Both semi-axes of the design ellipsoid grow by elevation shift + geoid height; a design axis that
/// is not positive stands for that of the object's own ellipsoid, a scale that is not positive for 1.
/// Parameters that a method has no use for are stored and reported.
///
/// Chosen: the order of the constructor arguments is that of the parameters, and the design axes are
/// those before the lift. Minnesota publishes enlarged axes and leaves both shifts 0, Wisconsin the
/// plain axes and a height; a caller who gives enlarged axes and fills in the shifts for information
/// only counts them twice.
class GEOMATH_API CountyProj : public TGeoProj {
 public:
  /// Those of CountyParams but for the ellipsoid, which SetParam alone sets.
  double LonOrigin() const { return lonOrigin_; }
  void LonOrigin(double value) { Set(lonOrigin_, value); }
  double LatOrigin() const { return latOrigin_; }
  void LatOrigin(double value) { Set(latOrigin_, value); }
  double NorthStdP() const { return northStdP_; }
  void NorthStdP(double value) { Set(northStdP_, value); }
  double SouthStdP() const { return southStdP_; }
  void SouthStdP(double value) { Set(southStdP_, value); }
  double Scale() const { return scale_; }
  void Scale(double value) { Set(scale_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double ObliqueAngle() const { return obliqueAngle_; }
  void ObliqueAngle(double value) { Set(obliqueAngle_, value); }

  std::span<const ParamRow> Params() const override;

 protected:
  /// A county grid of one kind.
  CountyProj(ProjType type, double a, double invF, const CountyParams& params);

  /// The lifted ellipsoid and the scale that the method works with.
  Ellipsoid WorkingEllipsoid() const;
  double WorkingScale() const;

  /// The parameters as given.
  double lonOrigin_, latOrigin_, northStdP_, southStdP_, scale_, fNorth_, fEast_;
  double desElA_, desElB_, elevationShift_, obliqueAngle_, geoidHeight_;

 private:
  static const ParamRow kParams[];
};

}  // namespace zel_cs::geomath
