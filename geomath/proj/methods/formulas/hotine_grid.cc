#include "geomath/proj/methods/formulas/hotine_grid.h"

#include <cmath>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/kernels/projection_blocks.h"

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
  if (factors) factors->scale = hotine_.CylinderScale(std::sin(n), std::cos(n)) * reach;
  return true;
}

}  // namespace zel_cs::geomath
