#include "geomath/proj/methods/cassini_proj.h"

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TCassiniProj>> TCassiniProj::Params() {
  static constexpr ParamRow<TCassiniProj> rows[] = {
      {&TCassiniProj::phi0_, ParamKind::angle, &TCassiniProj::Prepare},
      {&TCassiniProj::lambda0_, ParamKind::angle, &TCassiniProj::Prepare},
      {&TCassiniProj::theta_, ParamKind::angle, &TCassiniProj::Prepare},
      {&TCassiniProj::fEast_, ParamKind::length},
      {&TCassiniProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TCassiniProj::TCassiniProj() : TCassiniProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0, 0) {}

TCassiniProj::TCassiniProj(double a, double invF, double lat0, double lon0, double axisAzimuth,
                           double fEast, double fNorth)
    : TGeoProj(ProjTypeCassini, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      theta_(axisAzimuth),
      fEast_(fEast),
      fNorth_(fNorth),
      cassini_(ell_, lat0, lon0, axisAzimuth) {}

void TCassiniProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TCassiniProj::Lon0(double value) {
  lambda0_ = value;
  Prepare();
}

void TCassiniProj::AxisAzimuth(double value) {
  theta_ = value;
  Prepare();
}

double TCassiniProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TCassiniProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TCassiniProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TCassiniProj::Prepare() { cassini_ = CassiniSoldner(ell_, phi0_, lambda0_, theta_); }

bool TCassiniProj::ProjectPoint(double& b, double& l, PointFactors*) const {
  Formulas().Forward<simd::Libm>(b, l);
  return true;
}

bool TCassiniProj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  Formulas().Inverse<simd::Libm>(n, e);
  return true;
}

bool TCassiniProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TCassiniProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TCassiniProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TCassiniProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
