#include "geomath/proj/methods/kms_proj_tm.h"

#include "geomath/proj/internal/formula_view.h"
#include "geomath/proj/internal/host_replaces.h"
#include "geomath/proj/internal/kms_blocks.h"
#include "geomath/proj/methods/kms_conversion.h"

namespace zel_cs::geomath {

TKMSProjTM::TKMSProjTM() = default;

TKMSProjTM::TKMSProjTM(double a, double invF, double cm, double scale, double lat0, double fEast,
                       double fNorth)
    : TDenmarkTMProj(a, invF, cm, scale, lat0, fEast, fNorth) {}

bool TKMSProjTM::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (KmsPrepare(b, l, kKmsInto) != 0) return false;
  return mode_ ? KmsConvertInPlace(b, l, kKmsIntermediateSystem, kKmsInto)
               : TDenmarkTMProj::ProjectPoint(b, l, factors);
}

bool TKMSProjTM::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const bool geographic = mode_ ? KmsConvertInPlace(n, e, kKmsIntermediateSystem, kKmsOutOf)
                                : TDenmarkTMProj::UnprojectPoint(n, e, factors);
  return geographic && KmsPrepare(n, e, kKmsOutOf) == 0;
}

bool TKMSProjTM::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  double n = b, e = l, ownN = b, ownE = l;  // a host's part has no derivatives
  if (!ProjectPoint(n, e, nullptr) || !TDenmarkTMProj::ProjectPoint(ownN, ownE, nullptr))
    return false;
  return n == ownN && e == ownE && TDenmarkTMProj::Formulas().Differentiate(b, l, derivatives);
}

FormulaView TKMSProjTM::Formulas() const {
  return !mode_ && KmsPreparesNothing() ? TDenmarkTMProj::Formulas() : FormulaView();
}

void TKMSProjTM::ForwardBlock(double* b, double* l, std::size_t count) const {
  if (HostReplaces<&TGeoProj::ForwardPoint>(*this))
    return TDenmarkTMProj::ForwardBlock(b, l, count);
  KmsPrepareBlock(b, l, count, kKmsInto);
  if (mode_)
    KmsConvertBlock(b, l, count, kKmsIntermediateSystem, kKmsInto);
  else
    ProjectBlock(b, l, count);
}

void TKMSProjTM::InverseBlock(double* n, double* e, std::size_t count) const {
  if (HostReplaces<&TGeoProj::InversePoint>(*this))
    return TDenmarkTMProj::InverseBlock(n, e, count);
  if (mode_)
    KmsConvertBlock(n, e, count, kKmsIntermediateSystem, kKmsOutOf);
  else
    UnprojectBlock(n, e, count);
  KmsPrepareBlock(n, e, count, kKmsOutOf);
}

}  // namespace zel_cs::geomath
