#include "geomath/proj/methods/hotine_proj.h"

#include "geomath/proj/methods/formulas/hotine_grid.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/param_table.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

HotineProj::HotineProj(ProjType type, std::span<const ParamRow> params, double a, double invF,
                       double azimuth, double scale, double lon0, double lat0, double fEast,
                       double fNorth)
    : TGeoProj(type, params, a, invF),
      azimuth_(azimuth),
      k0_(scale),
      lambdaC_(lon0),
      phiC_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  HotineProj::Prepare();
}

bool HotineProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ObliqueCentralPoint(phiC_, lambdaC_, b0, l0, db, dl);
}

double HotineProj::EquatorAzimuth() const {
  return Atan2(grid_->Projection().sinGamma0, grid_->Projection().cosGamma0);
}

void HotineProj::Prepare() {
  *grid_ = {{ell_, {azimuth_, k0_, phiC_, lambdaC_}},
            {Sin(azimuth_), Cos(azimuth_), fNorth_, fEast_}};
}

bool HotineProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  return IsLatitude(b) && grid_->ForwardPoint(b, l, factors);
}

bool HotineProj::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  return grid_->InversePoint(n, e, factors);
}

FormulaView HotineProj::Formulas() const { return ViewOf(*grid_); }

}  // namespace zel_cs::geomath
