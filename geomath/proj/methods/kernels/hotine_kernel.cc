#include "geomath/proj/methods/kernels/hotine_grid.h"
#include "geomath/proj/methods/kernels/projection_kernel_loops.h"

template struct zel_cs::geomath::ProjectionKernel<zel_cs::geomath::simd::GEOMATH_KERNEL_TARGET,
                                                  zel_cs::geomath::HotineGrid>;
