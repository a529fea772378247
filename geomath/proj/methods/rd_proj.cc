#include "geomath/proj/methods/rd_proj.h"

#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kRdScale = 0.9999079;

}  // namespace

std::span<const ParamRow<TRDProj>> TRDProj::Params() {
  static constexpr ParamRow<TRDProj> rows[] = {
      {&TRDProj::phi0_, ParamKind::angle, &TRDProj::Prepare},
      {&TRDProj::lambda0_, ParamKind::angle, &TRDProj::Prepare},
      {&TRDProj::fEast_, ParamKind::length},
      {&TRDProj::fNorth_, ParamKind::length},
  };
  return rows;
}

TRDProj::TRDProj() : TRDProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TRDProj::TRDProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth)
    : TGeoProj(ProjTypeRD, static_cast<int>(Params().size()), a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TRDProj::Prepare();
}

void TRDProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TRDProj::Lon0(double value) {
  lambda0_ = value;
  Prepare();
}

double TRDProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TRDProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TRDProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TRDProj::Prepare() { plane_ = DoubleStereographic(ell_, phi0_, lambda0_, kRdScale); }

bool TRDProj::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  double north, east;
  plane_.Forward(b, l, north, east, factors ? &factors->scale : nullptr,
                 factors ? &factors->convergence : nullptr);
  b = fNorth_ + north;
  l = fEast_ + east;
  return true;
}

bool TRDProj::InversePoint(double& n, double& e, PointFactors* factors) const {
  double phi, lambda;
  plane_.Inverse(n - fNorth_, e - fEast_, phi, lambda, factors ? &factors->scale : nullptr,
                 factors ? &factors->convergence : nullptr);
  n = phi;
  e = lambda;
  return true;
}

}  // namespace zel_cs::geomath
