#include "geomath/base/ellipsoid_formulas.h"
#include "geomath/simd/column_kernel_loops.h"

namespace zel_cs::geomath::simd {

template struct ColumnKernel<GEOMATH_KERNEL_TARGET, BlhToXyz>;
template struct ColumnKernel<GEOMATH_KERNEL_TARGET, XyzToBlh>;

}  // namespace zel_cs::geomath::simd
