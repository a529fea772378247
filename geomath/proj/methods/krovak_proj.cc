#include "geomath/proj/methods/krovak_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {
namespace {

constexpr unsigned char kConstructedDirection = 0x81;
constexpr unsigned char kSouthWestDirection = 0x84;

constexpr double kLat0 = 0.8639379797371931;    // 49°30′
constexpr double kLon0 = 0.7417649320975901;    // 42°30′ east of Ferro
constexpr double kFerro = 0.3083415011856649;   // 17°40′ west of Greenwich
constexpr double kPole = 1.042168563804743;     // 59°42′42.69689″
constexpr double kPseudo = 1.3700834628155487;  // 78°30′
constexpr double kScale = 0.9999;

}  // namespace

std::span<const ParamRow<TKrovakProj>> TKrovakProj::Params() {
  using T = TKrovakProj;
  static constexpr ParamRow<T> rows[] = {
      {&T::phi0_, ParamKind::angle, &T::Prepare},
      {&T::lambda0_, ParamKind::angle, &T::PrepareLongitude},
      {&T::dLon_, ParamKind::angle, &T::PrepareLongitude},
      {&T::uq_, ParamKind::angle, &T::Prepare},
      {&T::s0_, ParamKind::angle, &T::Prepare},
      {&T::k0_, ParamKind::scale},  // Kept: waits for the next Prepare
      {&T::fEast_, ParamKind::length},
      {&T::fNorth_, ParamKind::length},
  };
  return rows;
}

TKrovakProj::TKrovakProj()
    : TKrovakProj(kWgs84A, kWgs84InvF, kLat0, kLon0, kFerro, kPole, kPseudo, kScale, 0, 0) {}

TKrovakProj::TKrovakProj(double a, double invF, double lat0, double lon0, double dLon, double Uq,
                         double S0, double scale, double fEast, double fNorth)
    : TGeoProj(ProjTypeKrovak, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      dLon_(dLon),
      uq_(Uq),
      s0_(S0),
      k0_(scale),
      fEast_(fEast),
      fNorth_(fNorth) {
  direction_ = kConstructedDirection;
  TKrovakProj::Prepare();
  PrepareLongitude();
}

void TKrovakProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TKrovakProj::Lon0(double value) {
  lambda0_ = value;
  PrepareLongitude();
}

void TKrovakProj::dLon(double value) {
  dLon_ = value;
  PrepareLongitude();
}

void TKrovakProj::Uq(double value) {
  uq_ = value;
  Prepare();
}

void TKrovakProj::S0(double value) {
  s0_ = value;
  Prepare();
}

void TKrovakProj::SetNEAxes(const wchar_t* axes) {
  TGeoProj::SetNEAxes(axes);
  direction_ = kSouthWestDirection;  // Kept: whatever the text
}

double TKrovakProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TKrovakProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TKrovakProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambdaC_, b0, l0, db, dl);
}

void TKrovakProj::Prepare() {
  sphere_ = ConformalSphere(ell_, phi0_);
  sinUq_ = std::sin(uq_);
  cosUq_ = std::cos(uq_);
  n_ = std::sin(s0_);
  const double rho0 = k0_ * sphere_.R / std::tan(s0_);
  coneFactor_ = rho0 * std::pow(std::tan(s0_ / 2 + kPi / 4), n_);
}

void TKrovakProj::PrepareLongitude() { lambdaC_ = lambda0_ - dLon_; }

KrovakFormulas TKrovakProj::Formulas() const {
  return {sphere_, lambdaC_, sinUq_, cosUq_, n_, coneFactor_};
}

bool TKrovakProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  return ForwardOne(Formulas(), b, l);
}

bool TKrovakProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  return InverseOne(Formulas(), n, e);
}

bool TKrovakProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TKrovakProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TKrovakProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TKrovakProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
