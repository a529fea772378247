#include "geomath/proj/methods/malaysia_cs2000_proj.h"

#include "geomath/proj/methods/kernels/projection_blocks.h"

namespace zel_cs::geomath {

std::span<const ParamRow<TMalaysia_CS2000Proj>> TMalaysia_CS2000Proj::Params() {
  using P = TMalaysia_CS2000Proj;
  static constexpr ParamRow<P> rows[] = {
      {&P::azimuth_, ParamKind::angle, &P::Prepare},
      {&P::k0_, ParamKind::scale},
      {&P::lambda0_, ParamKind::angle, &P::Prepare},
      {&P::phi0_, ParamKind::angle, &P::Prepare},
  };
  return rows;
}

TMalaysia_CS2000Proj::TMalaysia_CS2000Proj()
    : TMalaysia_CS2000Proj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TMalaysia_CS2000Proj::TMalaysia_CS2000Proj(double a, double invF, double axisAzimuth, double scale,
                                           double lon0, double lat0)
    : TGeoProj(ProjTypeMalaysia_CS2000, static_cast<int>(Params().size()), a, invF, true),
      azimuth_(axisAzimuth),
      k0_(scale),
      lambda0_(lon0),
      phi0_(lat0),
      cassini_(ell_, phi0_, lambda0_, azimuth_) {}

void TMalaysia_CS2000Proj::Set(double& field, double value) {
  field = value;
  Prepare();
}

double TMalaysia_CS2000Proj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TMalaysia_CS2000Proj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

void TMalaysia_CS2000Proj::Prepare() { cassini_ = CassiniSoldner(ell_, phi0_, lambda0_, azimuth_); }

bool TMalaysia_CS2000Proj::ProjectPoint(double& b, double& l, PointFactors*) const {
  Formulas().Forward<simd::Libm>(b, l);
  return true;
}

bool TMalaysia_CS2000Proj::UnprojectPoint(double& n, double& e, PointFactors*) const {
  Formulas().Inverse<simd::Libm>(n, e);
  return true;
}

bool TMalaysia_CS2000Proj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(Formulas(), b, l, derivatives);
}

void TMalaysia_CS2000Proj::DifferentiateBlock(double* const (&columns)[4],
                                              std::size_t count) const {
  DerivativesByKernel(Formulas(), columns, count);
}

void TMalaysia_CS2000Proj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(Formulas(), *this, b, l, count);
}

void TMalaysia_CS2000Proj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(Formulas(), *this, n, e, count);
}

}  // namespace zel_cs::geomath
