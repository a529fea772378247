#include "geomath/proj/methods/formulas/colombia_formulas.h"
#include "geomath/proj/methods/kernels/projection_kernel.h"
#include "geomath/simd/column_kernel_loops.h"

namespace zel_cs::geomath::simd {

template struct ColumnKernel<GEOMATH_KERNEL_TARGET, ForwardOf<ColombiaFormulas>>;
template struct ColumnKernel<GEOMATH_KERNEL_TARGET, InverseOf<ColombiaFormulas>>;

}  // namespace zel_cs::geomath::simd
