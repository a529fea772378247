#pragma once

#include <cstddef>

#include "geomath/datum/similarity.h"

namespace zel_cs::geomath {

/// Similarity over columns of points, in place.
template <class Target>
struct SimilarityKernel {
  static void ToLocal(const Similarity& s, double* x, double* y, double* z, std::size_t count);
  static void ToWgs84(const Similarity& s, double* x, double* y, double* z, std::size_t count);
};

}  // namespace zel_cs::geomath
