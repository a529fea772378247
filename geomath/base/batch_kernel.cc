#include "geomath/base/batch_kernel.h"

#include <cmath>

#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

template <class Target>
bool BatchKernel<Target>::AllWithin(const double* values, std::size_t count, double bound) {
  std::size_t outside = 0;
  for (std::size_t i = 0; i < count; ++i) outside |= !(std::abs(values[i]) <= bound);
  return outside == 0;
}

template struct BatchKernel<simd::GEOMATH_KERNEL_TARGET>;

}  // namespace zel_cs::geomath
