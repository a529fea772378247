#include "geomath/proj/methods/minnesota_tm_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

TMinnesota_TMProj::TMinnesota_TMProj()
    : CountyProj(ProjTypeMinnesota_TM, kWgs84A, kWgs84InvF, CountyParams::NotSetUp()),
      tm_(CountySeries()) {}

TMinnesota_TMProj::TMinnesota_TMProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : CountyProj(ProjTypeMinnesota_TM, a, invF,
                 {lonOrigin, latOrigin, northStdP, southStdP, scale, fNorth, fEast, desElA, desElB,
                  elevationShift, obliqueAngle, geoidHeight}),
      tm_(CountySeries()) {}

bool TMinnesota_TMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(params_.lonOrigin, b0, l0, db, dl);
}

void TMinnesota_TMProj::Prepare() { tm_ = CountySeries(); }

StemTransverseMercator TMinnesota_TMProj::CountySeries() const {
  return {WorkingEllipsoid(), WorkingScale(), params_.latOrigin};
}

bool TMinnesota_TMProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const auto [north, east] = tm_.Forward(b, SetValue(l - params_.lonOrigin, 1), factors);
  b = params_.fNorth + north;
  l = params_.fEast + east;
  return true;
}

bool TMinnesota_TMProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const auto [phi, deltaLambda] = tm_.Inverse(n - params_.fNorth, e - params_.fEast, factors);
  n = phi;
  e = params_.lonOrigin + deltaLambda;
  return true;
}

bool TMinnesota_TMProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TMinnesota_TMProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TMinnesota_TMProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TMinnesota_TMProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
