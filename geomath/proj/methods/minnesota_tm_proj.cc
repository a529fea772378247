#include "geomath/proj/methods/minnesota_tm_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/county_ellipsoid.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TMinnesota_TMProj>> TMinnesota_TMProj::Params() {
  using T = TMinnesota_TMProj;
  static constexpr ParamRow<T> rows[] = {
      {&T::lambda0_, ParamKind::angle},
      {&T::phi0_, ParamKind::angle, &T::Prepare},
      {&T::northStdP_, ParamKind::angle},
      {&T::southStdP_, ParamKind::angle},
      {&T::k0_, ParamKind::scale, &T::Prepare},
      {&T::fNorth_, ParamKind::length},
      {&T::fEast_, ParamKind::length},
      {&T::desElA_, ParamKind::length, &T::Prepare},
      {&T::desElB_, ParamKind::length, &T::Prepare},
      {&T::elevationShift_, ParamKind::length, &T::Prepare},
      {&T::obliqueAngle_, ParamKind::angle},
      {&T::geoidHeight_, ParamKind::length, &T::Prepare},
  };
  return rows;
}

TMinnesota_TMProj::TMinnesota_TMProj()
    : TMinnesota_TMProj(kWgs84A, kWgs84InvF, 0, 0, 0, 1.0, 0, 0, 0, kWgs84A, kWgs84A, 0, 0, 0) {}

TMinnesota_TMProj::TMinnesota_TMProj(double a, double invF, double lonOrigin, double latOrigin,
                                     double northStdP, double southStdP, double scale,
                                     double fNorth, double fEast, double desElA, double desElB,
                                     double elevationShift, double obliqueAngle, double geoidHeight)
    : TGeoProj(ProjTypeMinnesota_TM, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(lonOrigin),
      phi0_(latOrigin),
      northStdP_(northStdP),
      southStdP_(southStdP),
      k0_(scale),
      fNorth_(fNorth),
      fEast_(fEast),
      desElA_(desElA),
      desElB_(desElB),
      elevationShift_(elevationShift),
      obliqueAngle_(obliqueAngle),
      geoidHeight_(geoidHeight),
      tm_(CountySeries()) {}

void TMinnesota_TMProj::LatOrigin(double value) {
  phi0_ = value;
  Prepare();
}

void TMinnesota_TMProj::Scale(double value) {
  k0_ = value;
  Prepare();
}

double TMinnesota_TMProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TMinnesota_TMProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TMinnesota_TMProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TMinnesota_TMProj::Prepare() { tm_ = CountySeries(); }

StemTransverseMercator TMinnesota_TMProj::CountySeries() const {
  return {CountyEllipsoid(ell_, desElA_, desElB_, elevationShift_, geoidHeight_), CountyScale(k0_),
          phi0_};
}

bool TMinnesota_TMProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  const auto [north, east] = tm_.Forward(b, SetValue(l - lambda0_, 1), factors);
  b = fNorth_ + north;
  l = fEast_ + east;
  return true;
}

bool TMinnesota_TMProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  const auto [phi, deltaLambda] = tm_.Inverse(n - fNorth_, e - fEast_, factors);
  n = phi;
  e = lambda0_ + deltaLambda;
  return true;
}

void TMinnesota_TMProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TMinnesota_TMProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
