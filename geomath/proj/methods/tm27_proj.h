#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct Tm27Formulas;

/// Transverse Mercator zone of the State Plane Coordinate System of 1927 by the tabular method
/// (Claire 1968, C&GS Publication 62-4, section on transverse Mercator), whose constants are those
/// of Clarke 1866 in arc-seconds and US survey feet.
///
/// Parameters, plain numbers whatever the unit code: L1 easting of the central meridian (feet), L2
/// its longitude (arc-seconds, west positive), L34 the rectifying latitude of the grid origin
/// (arc-seconds; published as 60·L3 + L4), L5 scale on the central meridian, L6 coefficient of the
/// cubic easting term, zone number (only stored). Coordinates are radians and metres.
///
/// Never fails. Kept: the method departs from a rigorous transverse Mercator by 1 mm at half a
/// degree from the central meridian, 23 mm at one and 0.4 m at two degrees, nearly all of it in
/// northing; coordinates of 1927 were published that way. A round trip closes to 1 mm within 1° and
/// to 4 mm within 2°; over the 49 published zones it is 0.16 mm within 1°. Longitudes of the inverse
/// are not folded.
///
/// Kept: SetEllipsoid changes what GetEllipsoid reports and not the mathematics. Computes the point
/// scale and the convergence, positive east of the central meridian in the northern hemisphere.
class GEOMATH_API TTM27Proj : public TGeoProj {
 public:
  /// All parameters 0, L5 1.
  TTM27Proj();
  /// The parameters in their order.
  TTM27Proj(double L1, double L2, double L34, double L5, double L6, int zone);

  /// The constants of a zone, in the units of the published table. The zone number is only stored.
  double L1() const { return L1_; }
  void L1(double value) { Set(L1_, value); }
  double L2() const { return L2_; }
  void L2(double value) { Set(L2_, value); }
  double L34() const { return L34_; }
  void L34(double value) { Set(L34_, value); }
  double L5() const { return L5_; }
  void L5(double value) { Set(L5_, value); }
  double L6() const { return L6_; }
  void L6(double value) { Set(L6_, value); }
  int Zone() const;
  void Zone(int value) { Set(zone_, value); }
  /// L1 in metres; the false northing is 0.
  double FEast() const override;

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double L1_, L2_, L34_, L5_, L6_, zone_;
  InPlace<Tm27Formulas, 8> formulas_;
};

}  // namespace zel_cs::geomath
