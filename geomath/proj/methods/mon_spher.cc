#include "geomath/proj/methods/mon_spher.h"

#include <cmath>

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TMonSpher>> TMonSpher::Params() {
  static constexpr ParamRow<TMonSpher> rows[] = {
      {&TMonSpher::phi0_, ParamKind::angle, &TMonSpher::Prepare},
      {&TMonSpher::lambda0_, ParamKind::angle, &TMonSpher::Prepare},
      {&TMonSpher::phiN_, ParamKind::angle, &TMonSpher::Prepare},
      {&TMonSpher::k1_, ParamKind::number, &TMonSpher::Prepare},
      {&TMonSpher::k0_, ParamKind::scale, &TMonSpher::Prepare},
      {&TMonSpher::fEast_, ParamKind::length, &TMonSpher::Prepare},
      {&TMonSpher::fNorth_, ParamKind::length, &TMonSpher::Prepare},
      {&TMonSpher::theta_, ParamKind::angle, &TMonSpher::Prepare},
  };
  return rows;
}

TMonSpher::TMonSpher() : TMonSpher(kWgs84A, kWgs84InvF, 0, 0, 0, 1.0, 1.0, 0, 0, 0) {}

TMonSpher::TMonSpher(double a, double invF, double lat0, double lon0, double latNormal, double k1,
                     double scale, double fEast, double fNorth, double axisAzimuth)
    : TGeoProj(ProjTypeMonSpher, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      phiN_(latNormal),
      k1_(k1),
      k0_(scale),
      fEast_(fEast),
      fNorth_(fNorth),
      theta_(axisAzimuth) {
  TMonSpher::Prepare();
}

void TMonSpher::Set(double& field, double value) {
  field = value;
  Prepare();
}

double TMonSpher::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TMonSpher::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TMonSpher::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TMonSpher::Prepare() {
  const ConformalSphere sphere(ell_, phiN_);
  formulas_ = {.sphere = sphere,
               .lambda0 = lambda0_,
               .fEast = fEast_,
               .fNorth = fNorth_,
               .R = k1_ * k0_ * sphere.R,
               .chi0 = sphere.Latitude(phi0_),
               .sinTheta = std::sin(theta_),
               .cosTheta = std::cos(theta_)};
}

// Scale of the sphere on the ellipsoid, times that of its transverse Mercator (Snyder 1987, 8-4).
double TMonSpher::PointScale(double sinPhi, double cosPhi,
                             const MonSpherFormulas::Position& at) const {
  const double m = ParallelRadius(sinPhi, cosPhi, ell_.e2);
  return formulas_.R * formulas_.sphere.alpha * at.cosChi / (ell_.a * m * at.cosSide);
}

bool TMonSpher::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  double n = b, e = l;
  const auto [at, sinPhi, cosPhi, exists] = ForwardOne(formulas_, n, e);
  if (!exists) return false;
  if (factors) factors->scale = PointScale(sinPhi, cosPhi, at);
  b = n;
  l = e;
  return true;
}

bool TMonSpher::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const MonSpherFormulas::Position at = InverseOne(formulas_, n, e);
  if (factors) factors->scale = PointScale(std::sin(n), std::cos(n), at);
  return true;
}

bool TMonSpher::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(formulas_, b, l, derivatives);
}

void TMonSpher::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(formulas_, columns, count);
}

void TMonSpher::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(formulas_, *this, b, l, count);
}

void TMonSpher::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(formulas_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
