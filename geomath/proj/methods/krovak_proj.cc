#include "geomath/proj/methods/krovak_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/internal/direction_codes.h"
#include "geomath/proj/methods/formulas/krovak_formulas.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

constexpr double kLat0 = 0.8639379797371931;    // 49°30′
constexpr double kLon0 = 0.7417649320975901;    // 42°30′ east of Ferro
constexpr double kFerro = 0.3083415011856649;   // 17°40′ west of Greenwich
constexpr double kPole = 1.042168563804743;     // 59°42′42.69689″
constexpr double kPseudo = 1.3700834628155487;  // 78°30′
constexpr double kScale = 0.9999;

}  // namespace

constexpr ParamRow TKrovakProj::kParams[] = {
    {"Lat0", Quantity::latitude, &TKrovakProj::phi0_},
    {"Lon0", Quantity::longitude, &TKrovakProj::lambda0_,
     InsteadOfPrepare<TKrovakProj, &TKrovakProj::PrepareLongitude>()},
    {"dLon", Quantity::longitude, &TKrovakProj::dLon_,
     InsteadOfPrepare<TKrovakProj, &TKrovakProj::PrepareLongitude>()},
    {"Uq", Quantity::latitude, &TKrovakProj::uq_},
    {"S0", Quantity::latitude, &TKrovakProj::s0_},
    // Kept: the scale waits for the next Prepare, and false coordinates are only stored.
    {"Scale", Quantity::scale, &TKrovakProj::k0_,
     InsteadOfPrepare<TKrovakProj, &TKrovakProj::LeaveConstants>()},
    {"East0", Quantity::easting, &TKrovakProj::fEast_,
     InsteadOfPrepare<TKrovakProj, &TKrovakProj::LeaveConstants>()},
    {"North0", Quantity::northing, &TKrovakProj::fNorth_,
     InsteadOfPrepare<TKrovakProj, &TKrovakProj::LeaveConstants>()},
};

std::span<const ParamRow> TKrovakProj::Params() const { return kParams; }

TKrovakProj::TKrovakProj()
    : TKrovakProj(kWgs84A, kWgs84InvF, kLat0, kLon0, kFerro, kPole, kPseudo, kScale, 0, 0) {}

TKrovakProj::TKrovakProj(double a, double invF, double lat0, double lon0, double dLon, double Uq,
                         double S0, double scale, double fEast, double fNorth)
    : TGeoProj(ProjTypeKrovak, kParams, a, invF),
      phi0_(lat0),
      lambda0_(lon0),
      dLon_(dLon),
      uq_(Uq),
      s0_(S0),
      k0_(scale),
      fEast_(fEast),
      fNorth_(fNorth) {
  direction_ = kNorthWestDirection;
  TKrovakProj::Prepare();
}

void TKrovakProj::Lon0(double value) {
  lambda0_ = value;
  PrepareLongitude();
}

void TKrovakProj::dLon(double value) {
  dLon_ = value;
  PrepareLongitude();
}

void TKrovakProj::SetNEAxes(const wchar_t* axes) {
  TGeoProj::SetNEAxes(axes);
  direction_ = kSouthWestDirection;  // Kept: whatever the text
}

bool TKrovakProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, formulas_->lambdaC, b0, l0, db, dl);
}

void TKrovakProj::Prepare() {
  const ConformalSphere sphere(ell_, phi0_);
  const double n = Sin(s0_), rho0 = k0_ * sphere.R / Tan(s0_);
  *formulas_ = {.sphere = sphere,
                .lambdaC = lambda0_ - dLon_,
                .sinUq = Sin(uq_),
                .cosUq = Cos(uq_),
                .n = n,
                .coneFactor = rho0 * Pow(Tan(s0_ / 2 + kPi / 4), n)};
}

void TKrovakProj::PrepareLongitude() { formulas_->lambdaC = lambda0_ - dLon_; }

bool TKrovakProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  return ForwardOne(*formulas_, b, l);
}

bool TKrovakProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  return InverseOne(*formulas_, n, e);
}

FormulaView TKrovakProj::Formulas() const { return ViewOf(*formulas_); }

}  // namespace zel_cs::geomath
