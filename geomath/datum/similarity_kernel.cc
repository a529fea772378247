#include "geomath/datum/similarity.h"
#include "geomath/simd/column_kernel_loops.h"

namespace zel_cs::geomath::simd {

template struct ColumnKernel<GEOMATH_KERNEL_TARGET, Wgs84ToLocal>;
template struct ColumnKernel<GEOMATH_KERNEL_TARGET, LocalToWgs84>;

}  // namespace zel_cs::geomath::simd
