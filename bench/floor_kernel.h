#pragma once

#include <cstddef>

/// Operations on doubles for one point.
struct Operations {
  int products, sums, divisions, roots;
};

/// The least time that a batch can take: a loop over the columns of its points that does as many
/// products, sums, divisions and roots for each point as the batch does, and nothing else. Seven
/// registers go side by side, and products and sums do not wait for each other, so that the units of
/// the processor are busy all the time.
template <class Target>
struct FloorKernel {
  /// `columnCount` columns, two or more, of `count` numbers each, which is seven registers or more.
  static void Run(const Operations& operations, double* const* columns, std::size_t columnCount,
                  std::size_t count);
};
