#include "geomath/proj/methods/albers_ea_conic_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/latitude.h"

// Equation numbers are Snyder 1987.
namespace zel_cs::geomath {
namespace {

constexpr double kEqualParallels = 1e-10;  // radians

}  // namespace

std::span<const ParamRow<TAlbersEAConicProj>> TAlbersEAConicProj::Params() {
  using T = TAlbersEAConicProj;
  static constexpr ParamRow<T> rows[] = {
      {&T::phiS_, ParamKind::angle, &T::Prepare},    {&T::phiN_, ParamKind::angle, &T::Prepare},
      {&T::lambda0_, ParamKind::angle, &T::Prepare}, {&T::phi0_, ParamKind::angle, &T::Prepare},
      {&T::fEast_, ParamKind::length, &T::Prepare},  {&T::fNorth_, ParamKind::length, &T::Prepare},
  };
  return rows;
}

TAlbersEAConicProj::TAlbersEAConicProj()
    : TAlbersEAConicProj(kWgs84A, kWgs84InvF, 0, kPi / 6, 0, 0, 0, 0) {}

TAlbersEAConicProj::TAlbersEAConicProj(double a, double invF, double southLat, double northLat,
                                       double lon0, double lat0, double fEast, double fNorth)
    : TGeoProj(ProjTypeLC, static_cast<int>(Params().size()), a, invF, true),
      phiS_(southLat),
      phiN_(northLat),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TAlbersEAConicProj::Prepare();
}

void TAlbersEAConicProj::SouthLat(double value) {
  phiS_ = value;
  Prepare();
}

void TAlbersEAConicProj::NorthLat(double value) {
  phiN_ = value;
  Prepare();
}

void TAlbersEAConicProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TAlbersEAConicProj::Lon0(double value) {
  lambda0_ = value;
  Prepare();
}

void TAlbersEAConicProj::FEast(double value) {
  fEast_ = value;
  Prepare();
}

void TAlbersEAConicProj::FNorth(double value) {
  fNorth_ = value;
  Prepare();
}

double TAlbersEAConicProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TAlbersEAConicProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TAlbersEAConicProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TAlbersEAConicProj::Prepare() {
  const double e2 = ell_.e2, e4 = e2 * e2, e6 = e4 * e2;
  AlbersFormulas& f = formulas_;
  f = {.a = ell_.a,
       .e = ell_.e,
       .e2 = e2,
       .lambda0 = lambda0_,
       .fEast = fEast_,
       .fNorth = fNorth_,
       .n = 0,
       .C = 0,
       .rho0 = 0,
       .qPole = 0,
       .authalic = {e2 / 3 + 31.0 / 180 * e4 + 517.0 / 5040 * e6,  // 3-18
                    23.0 / 360 * e4 + 251.0 / 3780 * e6, 761.0 / 45360 * e6},
       .nearSphere = ConformalLatitude(ell_).ServesColumns()};
  const auto q = [&f](double s) { return f.AuthalicQ<simd::Libm>(s); };
  const double sin1 = std::sin(phiS_), sin2 = std::sin(phiN_);
  const double m1 = ParallelRadius(sin1, std::cos(phiS_), e2);
  const double m2 = ParallelRadius(sin2, std::cos(phiN_), e2);
  const bool oneParallel = std::abs(phiS_ - phiN_) < kEqualParallels;
  f.n = oneParallel ? sin1 : (m1 * m1 - m2 * m2) / (q(sin2) - q(sin1));  // 14-14
  f.C = m1 * m1 + f.n * q(sin1);                                         // 14-13
  f.rho0 = ell_.a * std::sqrt(f.C - f.n * q(std::sin(phi0_))) / f.n;     // 14-12a
  f.qPole = q(1);
}

bool TAlbersEAConicProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  double north = b, east = l;
  if (!ForwardOne(formulas_, north, east)) return false;
  b = north;
  l = east;
  return true;
}

bool TAlbersEAConicProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  double phi = n, lambda = e;
  if (!InverseOne(formulas_, phi, lambda)) return false;
  n = phi;
  e = lambda;
  return true;
}

bool TAlbersEAConicProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(formulas_, b, l, derivatives);
}

void TAlbersEAConicProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(formulas_, columns, count);
}

void TAlbersEAConicProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(formulas_, *this, b, l, count);
}

void TAlbersEAConicProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(formulas_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
