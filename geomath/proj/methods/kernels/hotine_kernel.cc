#include "geomath/proj/methods/formulas/hotine_grid.h"
#include "geomath/proj/methods/kernels/projection_kernel.h"
#include "geomath/simd/column_kernel_loops.h"

namespace zel_cs::geomath::simd {

template struct ColumnKernel<GEOMATH_KERNEL_TARGET, ForwardOf<HotineGrid>>;
template struct ColumnKernel<GEOMATH_KERNEL_TARGET, InverseOf<HotineGrid>>;

}  // namespace zel_cs::geomath::simd
