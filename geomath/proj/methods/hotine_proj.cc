#include "geomath/proj/methods/hotine_proj.h"

#include <cmath>

#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"

namespace zel_cs::geomath {

HotineProj::HotineProj(unsigned int type, std::size_t paramCount, double a, double invF,
                       double azimuth, double scale, double lon0, double lat0, double fEast,
                       double fNorth)
    : TGeoProj(type, static_cast<int>(paramCount), a, invF, true),
      azimuth_(azimuth),
      k0_(scale),
      lambdaC_(lon0),
      phiC_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  HotineProj::Prepare();
}

void HotineProj::Set(double& field, double value) {
  field = value;
  Prepare();
}

bool HotineProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phiC_, lambdaC_, b0, l0, db, dl);
}

void HotineProj::Prepare() {
  grid_ = HotineGrid(Hotine(ell_, CentralLine()),
                     {std::sin(azimuth_), std::cos(azimuth_), fNorth_, fEast_});
}

bool HotineProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  return IsLatitude(b) && grid_.ForwardPoint(b, l, factors);
}

bool HotineProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  return grid_.InversePoint(n, e, factors);
}

bool HotineProj::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(grid_, b, l, derivatives);
}

void HotineProj::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(grid_, columns, count);
}

void HotineProj::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(grid_, *this, b, l, count);
}

void HotineProj::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(grid_, *this, n, e, count);
}

}  // namespace zel_cs::geomath
