#pragma once

#include "geomath/proj/methods/denmark_tm_proj.h"

namespace zel_cs::geomath {

/// A Danish national grid behind TDenmarkTMProj, by its system number (see kms_conversion.h).
/// Parameters, kind and domain are those of TDenmarkTMProj; the system number is not one of them.
///
/// Forward: preparation, TDenmarkTMProj, out of system 117, into the target system. The inverse
/// runs the same steps backwards. System 98 takes TDenmarkTMProj and the last conversion only. A
/// step that answers non-zero makes the conversion fail; the pair may then hold partial results.
/// Without a host's functions system 98 is exactly TDenmarkTMProj and every other one fails.
///
/// Kept: the grid direction code is always 0x81 (north, west), the directions of the grids behind
/// it, whatever axes are set; the converter delivers the pair in them, and SetNEAxes turns that pair.
class GEOMATH_API TKMSTransProj : public TDenmarkTMProj {
 public:
  /// WGS84, all parameters 0, scale 1, system 115.
  TKMSTransProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TKMSTransProj(double a, double invF, double cm, double scale, double lat0, double fEast,
                double fNorth, int systemCode);

  /// The number of the grid system, which the conversions behind the projection go by.
  int SystemCode() const { return systemCode_; }
  void SystemCode(int value) { systemCode_ = value; }

  void SetNEAxes(const wchar_t* axes) override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  bool Differentiate(double b, double l, GridDerivatives& derivatives) const override;
  // Those of TDenmarkTMProj where no function of a host stands between.
  FormulaView Formulas() const override;
  // The host's functions take one point each, between them the block runs together.
  void ForwardBlock(double* b, double* l, std::size_t count) const override;
  void InverseBlock(double* n, double* e, std::size_t count) const override;

 private:
  int systemCode_;
};

}  // namespace zel_cs::geomath
