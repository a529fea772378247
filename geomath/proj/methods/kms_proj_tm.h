#pragma once

#include "geomath/proj/methods/denmark_tm_proj.h"

namespace zel_cs::geomath {

/// TDenmarkTMProj behind the preparation of KmsPrepare, or, in system mode, the intermediate system
/// 117 of KmsConvert reached straight from the prepared geographic pair. Parameters, kind, domain
/// and accuracy are those of TDenmarkTMProj.
///
/// A step that answers non-zero makes the conversion fail; the pair may then hold partial results.
/// Without a host's functions the class is exactly TDenmarkTMProj, and the system mode fails.
class GEOMATH_API TKMSProjTM : public TDenmarkTMProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TKMSProjTM();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TKMSProjTM(double a, double invF, double cm, double scale, double lat0, double fEast,
             double fNorth);

  /// Whether conversions go into system 117; false after construction.
  bool Mode() const { return mode_; }
  void Mode(bool value) { mode_ = value; }

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
  bool mode_ = false;
};

}  // namespace zel_cs::geomath
