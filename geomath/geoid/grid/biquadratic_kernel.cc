#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/grid_kernel_loops.h"

namespace zel_cs::geomath {

template struct GridKernel<simd::GEOMATH_KERNEL_TARGET, Biquadratic>;

}  // namespace zel_cs::geomath
