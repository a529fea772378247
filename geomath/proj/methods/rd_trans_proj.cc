#include "geomath/proj/methods/rd_trans_proj.h"

#include "geomath/proj/internal/formula_view.h"
#include "geomath/proj/methods/math/latitude.h"

namespace zel_cs::geomath {
namespace {

constexpr int kCorrectionRounds = 3;

}  // namespace

TRDTransProj::TRDTransProj() : TRDTransProj(kWgs84A, kWgs84InvF, 0, 0, 1.0, 0, 0) {}

TRDTransProj::TRDTransProj(double a, double invF, double lat0, double lon0, double scale,
                           double fEast, double fNorth)
    : TDoubleSter(ProjTypeRDTrans, a, invF, lat0, lon0, scale, fEast, fNorth) {}

bool TRDTransProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!IsLatitude(b) || !TDoubleSter::ProjectPoint(b, l, factors)) return false;
  if (!correction_) return true;
  double dn = 0, de = 0;
  correction_(b, l, dn, de);
  b += dn;
  l += de;
  return true;
}

bool TRDTransProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  if (correction_) {
    double n0 = n, e0 = e;
    for (int round = 0; round < kCorrectionRounds; ++round) {
      double dn = 0, de = 0;
      correction_(n0, e0, dn, de);
      n0 = n - dn;
      e0 = e - de;
    }
    n = n0;
    e = e0;
  }
  return TDoubleSter::UnprojectPoint(n, e, factors);
}

bool TRDTransProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  double n = b, e = l, ownN = b, ownE = l;  // a host's part has no derivatives
  if (!ProjectPoint(n, e, nullptr) || !TDoubleSter::ProjectPoint(ownN, ownE, nullptr)) return false;
  return n == ownN && e == ownE && TDoubleSter::Formulas().Differentiate(b, l, derivatives);
}

FormulaView TRDTransProj::Formulas() const {
  return correction_ ? FormulaView{} : TDoubleSter::Formulas();
}

}  // namespace zel_cs::geomath
