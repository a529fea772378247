#pragma once

#include <cstddef>

namespace zel_cs::geomath {

/// The check of columns that every batch makes, as AllWithin.
template <class Target>
struct BatchKernel {
  static bool AllWithin(const double* values, std::size_t count, double bound);
};

}  // namespace zel_cs::geomath
