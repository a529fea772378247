#include "geomath/proj/methods/kms_trans_proj.h"

#include "geomath/proj/internal/direction_codes.h"
#include "geomath/proj/internal/formula_view.h"
#include "geomath/proj/internal/host_replaces.h"
#include "geomath/proj/internal/kms_blocks.h"
#include "geomath/proj/methods/kms_conversion.h"

namespace zel_cs::geomath {
namespace {

constexpr int kDefaultSystem = 115;

}  // namespace

TKMSTransProj::TKMSTransProj()
    : TKMSTransProj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, kDefaultSystem) {}

TKMSTransProj::TKMSTransProj(double a, double invF, double cm, double scale, double lat0,
                             double fEast, double fNorth, int systemCode)
    : TDenmarkTMProj(a, invF, cm, scale, lat0, fEast, fNorth), systemCode_(systemCode) {
  direction_ = kNorthWestDirection;
}

void TKMSTransProj::SetNEAxes(const wchar_t* axes) {
  TDenmarkTMProj::SetNEAxes(axes);
  direction_ = kNorthWestDirection;
}

bool TKMSTransProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const bool own = systemCode_ == kKmsOwnSystem;
  if (!own && KmsPrepare(b, l, kKmsInto) != 0) return false;
  if (!TDenmarkTMProj::ProjectPoint(b, l, factors)) return false;
  if (!own && !KmsConvertInPlace(b, l, kKmsIntermediateSystem, kKmsOutOf)) return false;
  return KmsConvertInPlace(b, l, systemCode_, kKmsInto);
}

bool TKMSTransProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const bool own = systemCode_ == kKmsOwnSystem;
  if (!KmsConvertInPlace(n, e, systemCode_, kKmsOutOf)) return false;
  if (!own && !KmsConvertInPlace(n, e, kKmsIntermediateSystem, kKmsInto)) return false;
  if (!TDenmarkTMProj::UnprojectPoint(n, e, factors)) return false;
  return own || KmsPrepare(n, e, kKmsOutOf) == 0;
}

bool TKMSTransProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  double n = b, e = l, ownN = b, ownE = l;  // a host's part has no derivatives
  if (!ProjectPoint(n, e, nullptr) || !TDenmarkTMProj::ProjectPoint(ownN, ownE, nullptr))
    return false;
  return n == ownN && e == ownE && TDenmarkTMProj::Formulas().Differentiate(b, l, derivatives);
}

FormulaView TKMSTransProj::Formulas() const {
  return KmsConvertsNothing(systemCode_) ? TDenmarkTMProj::Formulas() : FormulaView();
}

void TKMSTransProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  if (HostReplaces<&TGeoProj::ForwardPoint>(*this))
    return TDenmarkTMProj::ForwardBlock(b, l, count);
  const bool own = systemCode_ == kKmsOwnSystem;
  if (!own) KmsPrepareBlock(b, l, count, kKmsInto);
  ProjectBlock(b, l, count);
  if (!own) KmsConvertBlock(b, l, count, kKmsIntermediateSystem, kKmsOutOf);
  KmsConvertBlock(b, l, count, systemCode_, kKmsInto);
}

void TKMSTransProj::InverseBlock(double* n, double* e, std::size_t count) const {
  if (HostReplaces<&TGeoProj::InversePoint>(*this))
    return TDenmarkTMProj::InverseBlock(n, e, count);
  const bool own = systemCode_ == kKmsOwnSystem;
  KmsConvertBlock(n, e, count, systemCode_, kKmsOutOf);
  if (!own) KmsConvertBlock(n, e, count, kKmsIntermediateSystem, kKmsInto);
  UnprojectBlock(n, e, count);
  if (!own) KmsPrepareBlock(n, e, count, kKmsOutOf);
}

}  // namespace zel_cs::geomath
