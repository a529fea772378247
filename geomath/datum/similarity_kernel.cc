#include "geomath/datum/similarity_kernel.h"

#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

template <class Target>
void SimilarityKernel<Target>::ToLocal(const Similarity& s, double* GEOMATH_RESTRICT x,
                                       double* GEOMATH_RESTRICT y, double* GEOMATH_RESTRICT z,
                                       std::size_t count) {
  const Similarity local = s;  // plain doubles that no column can alias
  for (std::size_t i = 0; i < count; ++i) local.ToLocal(x[i], y[i], z[i]);
}

template <class Target>
void SimilarityKernel<Target>::ToWgs84(const Similarity& s, double* GEOMATH_RESTRICT x,
                                       double* GEOMATH_RESTRICT y, double* GEOMATH_RESTRICT z,
                                       std::size_t count) {
  const Similarity local = s;
  for (std::size_t i = 0; i < count; ++i) local.ToWgs84(x[i], y[i], z[i]);
}

template struct SimilarityKernel<simd::GEOMATH_KERNEL_TARGET>;

}  // namespace zel_cs::geomath
