#include "geomath/proj/methods/spc_tm83_proj.h"

#include "geomath/base/angle.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TSPC_TM83Proj>> TSPC_TM83Proj::Params() {
  static constexpr ParamRow<TSPC_TM83Proj> rows[] = {
      {&TSPC_TM83Proj::lambda0_, ParamKind::angle},
      {&TSPC_TM83Proj::k0_, ParamKind::scale, &TSPC_TM83Proj::Prepare},
      {&TSPC_TM83Proj::phi0_, ParamKind::angle, &TSPC_TM83Proj::Prepare},
      {&TSPC_TM83Proj::fEast_, ParamKind::length},
      {&TSPC_TM83Proj::fNorth_, ParamKind::length},
      {&TSPC_TM83Proj::zone_, ParamKind::number},
  };
  return rows;
}

TSPC_TM83Proj::TSPC_TM83Proj() : TSPC_TM83Proj(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, 0) {}

TSPC_TM83Proj::TSPC_TM83Proj(double a, double invF, double cm, double scale, double lat0,
                             double fEast, double fNorth, int zone)
    : TGeoProj(ProjTypeSPC_TM83, static_cast<int>(Params().size()), a, invF, true),
      lambda0_(cm),
      k0_(scale),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth),
      zone_(zone),
      tm_(ell_, scale, lat0) {}

void TSPC_TM83Proj::Scale(double value) {
  k0_ = value;
  Prepare();
}

void TSPC_TM83Proj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

int TSPC_TM83Proj::Zone() const { return ParamAsInt(zone_); }

double TSPC_TM83Proj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TSPC_TM83Proj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TSPC_TM83Proj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return TransverseCentralPoint(lambda0_, b0, l0, db, dl);
}

void TSPC_TM83Proj::Prepare() { tm_ = StemTransverseMercator(ell_, k0_, phi0_); }

bool TSPC_TM83Proj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const auto [north, east] = tm_.Forward(b, SetValue(l - lambda0_, 1), factors);
  b = fNorth_ + north;
  l = fEast_ + east;
  return true;
}

bool TSPC_TM83Proj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const auto [phi, deltaLambda] = tm_.Inverse(n - fNorth_, e - fEast_, factors);
  n = phi;
  e = lambda0_ + deltaLambda;
  return true;
}

bool TSPC_TM83Proj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TSPC_TM83Proj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TSPC_TM83Proj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TSPC_TM83Proj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
