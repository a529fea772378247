#include "geomath/geoid/grid/cubic.h"
#include "geomath/geoid/grid/grid_kernel_loops.h"

namespace zel_cs::geomath {

template struct GridKernel<simd::GEOMATH_KERNEL_TARGET, ConvolutionByNearest>;
template struct GridKernel<simd::GEOMATH_KERNEL_TARGET, ConvolutionByCell>;
template struct GridKernel<simd::GEOMATH_KERNEL_TARGET, ConvolutionNorth>;
template struct GridKernel<simd::GEOMATH_KERNEL_TARGET, LagrangeSouth>;

}  // namespace zel_cs::geomath
