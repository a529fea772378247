#include "geomath/proj/methods/minnesota_om_proj.h"

#include <cmath>

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

TMinnesota_OMProj::TMinnesota_OMProj()
    : CountyProj(ProjTypeMinnesota_OM, kWgs84A, kWgs84InvF, CountyParams::NotSetUp()) {
  TMinnesota_OMProj::Prepare();
}

TMinnesota_OMProj::TMinnesota_OMProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : CountyProj(ProjTypeMinnesota_OM, a, invF,
                 {lonOrigin, latOrigin, northStdP, southStdP, scale, fNorth, fEast, desElA, desElB,
                  elevationShift, obliqueAngle, geoidHeight}) {
  TMinnesota_OMProj::Prepare();
}

bool TMinnesota_OMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(params_.latOrigin, params_.lonOrigin, b0, l0, db, dl);
}

void TMinnesota_OMProj::Prepare() {
  const Ellipsoid county = WorkingEllipsoid();
  const Hotine hotine(county,
                      {params_.obliqueAngle, WorkingScale(), params_.latOrigin, params_.lonOrigin});
  grid_ = HotineGrid(hotine, {std::sin(params_.obliqueAngle), std::cos(params_.obliqueAngle),
                              params_.fNorth, params_.fEast});
}

bool TMinnesota_OMProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  return IsLatitude(b) && grid_.ForwardPoint(b, l, factors);
}

bool TMinnesota_OMProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  return grid_.InversePoint(n, e, factors);
}

bool TMinnesota_OMProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(grid_, b, l, derivatives);
}

void TMinnesota_OMProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(grid_, columns, count);
}

void TMinnesota_OMProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(grid_, *this, b, l, count);
}

void TMinnesota_OMProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(grid_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
