#include "geomath/geoid/grid/bilinear.h"
#include "geomath/geoid/grid/grid_kernel_loops.h"

namespace zel_cs::geomath {

template struct GridKernel<simd::GEOMATH_KERNEL_TARGET, BilinearSouth>;
template struct GridKernel<simd::GEOMATH_KERNEL_TARGET, BilinearNorth>;
template struct GridKernel<simd::GEOMATH_KERNEL_TARGET, BilinearNorthByDifferences>;

}  // namespace zel_cs::geomath
