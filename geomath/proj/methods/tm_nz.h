#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/methods/utm_proj.h"

namespace zel_cs::geomath {

struct TmNzFormulas;

/// TUTMProj whose plane is divided by a grid scale about the false origin (New Zealand): N = N0 +
/// (N′ − N0)/g, E likewise. Parameters are those of TUTMProj and the grid scale (index 5). Accuracy,
/// domain and the sign of the convergence are TUTMProj's; the point scale is its point scale over
/// g. Never fails; g = 0 gives results that are not finite.
class GEOMATH_API TTTMNZ : public TUTMProj {
 public:
  /// WGS84, all parameters 0, scale 1, grid scale 0.999998261.
  TTTMNZ();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TTTMNZ(double a, double invF, double cm, double scale, double lat0, double fEast, double fNorth,
         double gridScale);

  /// By which distances from the false origin are divided.
  double GridScale() const { return gridScale_; }
  void GridScale(double value) { Set(gridScale_, value); }

  std::span<const ParamRow> Params() const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double gridScale_;
  InPlace<TmNzFormulas, 19> formulas_;
};

}  // namespace zel_cs::geomath
