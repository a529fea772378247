#include "geomath/proj/methods/formulas/mon_spher_formulas.h"
#include "geomath/proj/methods/kernels/projection_kernel.h"
#include "geomath/simd/column_kernel_loops.h"

namespace zel_cs::geomath::simd {

template struct ColumnKernel<GEOMATH_KERNEL_TARGET, ForwardOf<MonSpherFormulas>>;
template struct ColumnKernel<GEOMATH_KERNEL_TARGET, InverseOf<MonSpherFormulas>>;

}  // namespace zel_cs::geomath::simd
