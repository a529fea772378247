#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct Lc27Formulas;

/// Lambert zone of the State Plane Coordinate System of 1927 by the tabular method (Claire 1968,
/// C&GS Publication 62-4, section on the Lambert projection), whose constants are those of Clarke
/// 1866 in arc-seconds and US survey feet.
///
/// Parameters, plain numbers whatever the unit code: L1 easting of the central meridian (feet), L2
/// its longitude (arc-seconds, west positive), L3 map radius of the central parallel and L4 of the
/// parallel of zero northing (feet), L5 scale on the central parallel, L6 its sine (the cone
/// constant), L78 its rectifying latitude (arc-seconds; published as 60·L7 + L8), L9, L10, L11
/// coefficients of the radius in 10⁻¹⁶, 10⁻²⁴, 10⁻³² per foot, zone number (only stored).
/// Coordinates are radians and metres. A zone for oneself has, at the central parallel φ0 with radii
/// of curvature ρ0, ν0 in feet: L9 = 10¹⁶/(6·ρ0·ν0), L10 = 10²⁴·tan φ0/(24·ρ0·ν0²),
/// L11 = 10³²·(5 + 3·tan²φ0)/(120·ρ0·ν0³), L3 = L5·ν0/tan φ0.
///
/// Never fails. Kept: the method departs from a rigorous Lambert projection by up to 30 mm inside a
/// zone, mostly less than 10 mm, in northing; coordinates of 1927 were published that way. A round
/// trip closes to 1 mm. Longitudes are not folded.
///
/// Kept: SetEllipsoid changes what GetEllipsoid reports and not the mathematics. Computes the point
/// scale and the convergence, positive east of the central meridian in the northern hemisphere.
class GEOMATH_API TLC27Proj : public TGeoProj {
 public:
  /// All parameters 0, L5 1.
  TLC27Proj();
  /// The parameters in their order.
  TLC27Proj(double L1, double L2, double L3, double L4, double L5, double L6, double L78, double L9,
            double L10, double L11, int zone);

  /// The constants of a zone, in the units of the published table. The zone number is only stored.
  double L1() const { return L1_; }
  void L1(double value) { Set(L1_, value); }
  double L2() const { return L2_; }
  void L2(double value) { Set(L2_, value); }
  double L3() const { return L3_; }
  void L3(double value) { Set(L3_, value); }
  double L4() const { return L4_; }
  void L4(double value) { Set(L4_, value); }
  double L5() const { return L5_; }
  void L5(double value) { Set(L5_, value); }
  double L6() const { return L6_; }
  void L6(double value) { Set(L6_, value); }
  double L78() const { return L78_; }
  void L78(double value) { Set(L78_, value); }
  double L9() const { return L9_; }
  void L9(double value) { Set(L9_, value); }
  double L10() const { return L10_; }
  void L10(double value) { Set(L10_, value); }
  double L11() const { return L11_; }
  void L11(double value) { Set(L11_, value); }
  int Zone() const;
  void Zone(int value) { Set(zone_, value); }
  /// L1 in metres; the false northing is 0.
  double FEast() const override;

  std::span<const ParamRow> Params() const override;
  /// Around the central parallel and meridian.
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double L1_, L2_, L3_, L4_, L5_, L6_, L78_, L9_, L10_, L11_, zone_;
  InPlace<Lc27Formulas, 12> formulas_;
};

}  // namespace zel_cs::geomath
