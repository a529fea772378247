#include "geomath/proj/methods/mercator_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"

// Equation numbers are Snyder 1987; his scale on the equator is k0_ here.
namespace zel_cs::geomath {
namespace {

constexpr double kPolarGap = 1e-6;  // radians

}  // namespace

std::span<const ParamRow<TMercatorProj>> TMercatorProj::Params() {
  static constexpr ParamRow<TMercatorProj> rows[] = {
      {&TMercatorProj::lambda0_, ParamKind::angle, &TMercatorProj::Prepare},
      {&TMercatorProj::phi0_, ParamKind::angle, &TMercatorProj::Prepare},
      {&TMercatorProj::fEast_, ParamKind::length, &TMercatorProj::Prepare},
      {&TMercatorProj::fNorth_, ParamKind::length, &TMercatorProj::Prepare},
  };
  return rows;
}

TMercatorProj::TMercatorProj() : TMercatorProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TMercatorProj::TMercatorProj(double a, double invF, double lon0, double lat0, double fEast,
                             double fNorth)
    : TGeoProj(ProjTypeMercator, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TMercatorProj::Prepare();
}

void TMercatorProj::Set(double& field, double value) {
  field = value;
  Prepare();
}

double TMercatorProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TMercatorProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TMercatorProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  b0 = 0;
  l0 = lambda0_;
  db = kHalfPi - kPolarGap;
  dl = kPi;
  return true;
}

void TMercatorProj::Prepare() {
  k0_ = ParallelRadius(std::sin(phi0_), std::cos(phi0_), ell_.e2);
  formulas_ = {.latitude = ConformalLatitude(ell_),
               .lambda0 = lambda0_,
               .fEast = fEast_,
               .fNorth = fNorth_,
               .aK0 = ell_.a * k0_};
}

PointFactors TMercatorProj::FactorsAt(double sinPhi, double cosPhi) const {
  return {.scale = k0_ / ParallelRadius(sinPhi, cosPhi, ell_.e2), .convergence = 0};  // 7-8
}

bool TMercatorProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b;
  if (!(std::abs(phi) < kHalfPi)) return false;

  ForwardOne(formulas_, b, l);
  if (factors) *factors = FactorsAt(std::sin(phi), std::cos(phi));
  return true;
}

bool TMercatorProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  InverseOne(formulas_, n, e);
  if (factors) *factors = FactorsAt(std::sin(n), std::cos(n));
  return true;
}

bool TMercatorProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(formulas_, b, l, derivatives);
}

void TMercatorProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(formulas_, columns, count);
}

void TMercatorProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(formulas_, *this, b, l, count);
}

void TMercatorProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(formulas_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
