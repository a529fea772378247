#include "geomath/base/batch.h"

#include "geomath/base/batch_kernel.h"

namespace zel_cs::geomath {

bool AllWithin(const double* values, std::size_t count, double bound) {
  const auto allWithin =
      simd::ForActiveSet([](auto target) { return &BatchKernel<decltype(target)>::AllWithin; });
  return allWithin(values, count, bound);
}

}  // namespace zel_cs::geomath
