#include "geomath/proj/methods/double_ster_proj.h"

#include <iterator>

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TDoubleSter>> TDoubleSter::Params() {
  static constexpr ParamRow<TDoubleSter> rows[] = {
      {&TDoubleSter::phi0_, ParamKind::angle, &TDoubleSter::Prepare},
      {&TDoubleSter::lambda0_, ParamKind::angle, &TDoubleSter::Prepare},
      {&TDoubleSter::k0_, ParamKind::scale, &TDoubleSter::Prepare},
      {&TDoubleSter::fEast_, ParamKind::length},
      {&TDoubleSter::fNorth_, ParamKind::length},
  };
  static_assert(std::size(rows) == kParamCount);
  return rows;
}

TDoubleSter::TDoubleSter() : TDoubleSter(kWgs84A, kWgs84InvF, 0, 0, 1.0, 0, 0) {}

TDoubleSter::TDoubleSter(double a, double invF, double lat0, double lon0, double scale,
                         double fEast, double fNorth)
    : TDoubleSter(ProjTypeDoubleSter, kParamCount, a, invF, lat0, lon0, scale, fEast, fNorth) {}

TDoubleSter::TDoubleSter(ProjType type, int paramCount, double a, double invF, double lat0,
                         double lon0, double scale, double fEast, double fNorth)
    : TGeoProj(static_cast<unsigned int>(type), paramCount, a, invF, true),
      phi0_(lat0),
      lambda0_(lon0),
      k0_(scale),
      fEast_(fEast),
      fNorth_(fNorth) {
  TDoubleSter::Prepare();
}

void TDoubleSter::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

void TDoubleSter::Lon0(double value) {
  lambda0_ = value;
  Prepare();
}

void TDoubleSter::Scale(double value) {
  k0_ = value;
  Prepare();
}

double TDoubleSter::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TDoubleSter::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TDoubleSter::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TDoubleSter::Prepare() { plane_ = DoubleStereographic(ell_, phi0_, lambda0_, k0_); }

DoubleSterFormulas TDoubleSter::Formulas() const { return {plane_, fEast_, fNorth_}; }

bool TDoubleSter::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  const auto image = ForwardOne(Formulas(), b, l);
  if (factors) *factors = plane_.Factors(image);
  return true;
}

bool TDoubleSter::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  const auto vector = InverseOne(Formulas(), n, e);
  if (factors) *factors = plane_.Factors(vector, n);
  return true;
}

bool TDoubleSter::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TDoubleSter::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TDoubleSter::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TDoubleSter::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
