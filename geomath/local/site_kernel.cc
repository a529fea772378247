#include "geomath/local/site_formulas.h"
#include "geomath/simd/column_kernel_loops.h"

namespace zel_cs::geomath::simd {

template struct ColumnKernel<GEOMATH_KERNEL_TARGET, GridToSite>;
template struct ColumnKernel<GEOMATH_KERNEL_TARGET, SiteToGrid>;
template struct ColumnKernel<GEOMATH_KERNEL_TARGET, GridToGroundPlane>;
template struct ColumnKernel<GEOMATH_KERNEL_TARGET, GroundToGridPlane>;

}  // namespace zel_cs::geomath::simd
