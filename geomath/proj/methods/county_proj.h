#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/param_table.h"

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
  /// One parameter, in its unit; a setter takes effect at once.
  double LonOrigin() const { return params_.lonOrigin; }
  void LonOrigin(double value) { Set(params_.lonOrigin, value); }
  double LatOrigin() const { return params_.latOrigin; }
  void LatOrigin(double value) { Set(params_.latOrigin, value); }
  double NorthStdP() const { return params_.northStdP; }
  void NorthStdP(double value) { Set(params_.northStdP, value); }
  double SouthStdP() const { return params_.southStdP; }
  void SouthStdP(double value) { Set(params_.southStdP, value); }
  double Scale() const { return params_.scale; }
  void Scale(double value) { Set(params_.scale, value); }
  double FNorth() const override { return params_.fNorth; }
  void FNorth(double value) { Set(params_.fNorth, value); }
  double FEast() const override { return params_.fEast; }
  void FEast(double value) { Set(params_.fEast, value); }
  double ObliqueAngle() const { return params_.obliqueAngle; }
  void ObliqueAngle(double value) { Set(params_.obliqueAngle, value); }

  double GetParam(int index, unsigned int unit) const override;
  void SetParam(double value, int index, unsigned int unit) override;

 protected:
  /// A county grid of one kind.
  CountyProj(ProjType type, double a, double invF, const CountyParams& params);

  /// The lifted ellipsoid and the scale that the method works with.
  Ellipsoid WorkingEllipsoid() const;
  double WorkingScale() const;

  CountyParams params_;  ///< as given

 private:
  void Set(double& field, double value);
  static std::span<const ParamRow<CountyParams>> Params();
};

}  // namespace zel_cs::geomath
