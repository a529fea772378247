#include "geomath/proj/methods/nzmg_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kInternationalA = 6378388;  // metres
constexpr double kInternationalInvF = 297;
// |dz/dζ| over the radius of the parallel, both in units of a.
double PointScale(nzmg::Complex zeta, double phi, double e2) {
  const double c = std::cos(phi), sin2 = 1 - c * c;
  return std::sqrt(nzmg::Norm(nzmg::Slope(zeta)) * (1 - e2 * sin2)) / c;
}

}  // namespace

std::span<const ParamRow<TNZMGProj>> TNZMGProj::Params() {
  static constexpr ParamRow<TNZMGProj> rows[] = {
      {&TNZMGProj::phi0_, ParamKind::angle},
      {&TNZMGProj::lambda0_, ParamKind::angle},
      {&TNZMGProj::fEast_, ParamKind::length},
      {&TNZMGProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TNZMGProj::TNZMGProj()
    : TNZMGProj(kInternationalA, kInternationalInvF, -41 * kRadPerDeg, 173 * kRadPerDeg, 2510000,
                6023150) {}

TNZMGProj::TNZMGProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth)
    : TGeoProj(ProjTypeNZMG, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      fEast_(fEast),
      fNorth_(fNorth) {}

double TNZMGProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TNZMGProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TNZMGProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

bool TNZMGProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const double phi = b;
  const nzmg::Complex zeta = Formulas().Forward<simd::Libm>(b, l);
  if (factors) factors->scale = PointScale(zeta, phi, ell_.e2);
  return true;
}

bool TNZMGProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const nzmg::Complex zeta = Formulas().Inverse<simd::Libm>(n, e);
  if (factors) factors->scale = PointScale(zeta, n, ell_.e2);
  return true;
}

bool TNZMGProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TNZMGProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TNZMGProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TNZMGProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
