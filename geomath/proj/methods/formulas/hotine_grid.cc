#include "geomath/proj/methods/formulas/hotine_grid.h"

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {

HotineGrid::HotineGrid(const Hotine& hotine, const Placement& placement)
    : hotine_(hotine), placement_(placement) {}

bool HotineGrid::ForwardPoint(double& b, double& l, PointFactors* factors) const {
  const Hotine::Projected at = ForwardOne(*this, b, l);
  if (factors) factors->scale = hotine_.CylinderScale(at.sinPhi, at.cosPhi) / at.reach;  // 9-32
  return true;
}

bool HotineGrid::InversePoint(double& n, double& e, PointFactors* factors) const {
  const double reach = InverseOne(*this, n, e).reach;
  if (!factors) return true;
  const auto [sinPhi, cosPhi] = SineCosineOne(n);
  factors->scale = hotine_.CylinderScale(sinPhi, cosPhi) * reach;
  return true;
}

}  // namespace zel_cs::geomath
