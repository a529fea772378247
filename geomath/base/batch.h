#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <tuple>
#include <utility>

#include "geomath/simd/column_kernel.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

/// Points of a batch that go through all steps together: small enough that their columns stay in
/// the first-level cache.
inline constexpr std::size_t kBatchBlock = 256;

/// Whether all values lie between ±bound; false with any NaN.
bool AllWithin(const double* values, std::size_t count, double bound);

/// Makes every point of a block without finite coordinates NaN in all columns; returns the number
/// of the others.
template <std::size_t N>
std::size_t MarkFailures(double* const (&columns)[N], std::size_t count) {
  const auto allFinite = [&](const double* column) {
    return AllWithin(column, count, std::numeric_limits<double>::max());
  };
  if (std::all_of(columns, columns + N, allFinite)) return count;
  std::size_t good = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const auto finiteHere = [i](const double* column) { return std::isfinite(column[i]); };
    const bool finite = std::all_of(columns, columns + N, finiteHere);
    good += finite;
    if (finite) continue;
    for (double* column : columns) column[i] = std::numeric_limits<double>::quiet_NaN();
  }
  return good;
}

/// Runs `convert`, a callable (double* const (&columns)[N], std::size_t count), over `count` points
/// in place, block by block on contiguous columns; the coordinates of point i stand at
/// coordinates[i * stride]. A point whose result is not finite gets quiet NaN in every slot; a
/// converter marks a failed point by any coordinate that is not finite. Returns the number of
/// points converted.
template <class Convert, class... Columns>
std::size_t ConvertBlocks(Convert&& convert, std::size_t count, std::ptrdiff_t stride,
                          Columns*... coordinates) {
  constexpr std::size_t kColumns = sizeof...(Columns);
  double* const source[kColumns] = {coordinates...};
  double buffer[kColumns][kBatchBlock];
  std::size_t converted = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    const std::size_t n = std::min(kBatchBlock, count - start);
    const std::ptrdiff_t first = static_cast<std::ptrdiff_t>(start) * stride;
    double* block[kColumns];
    for (std::size_t c = 0; c < kColumns; ++c) {
      double* from = source[c] + first;
      block[c] = stride == 1 ? from : buffer[c];
      if (stride != 1)
        for (std::size_t i = 0; i < n; ++i, from += stride) buffer[c][i] = *from;
    }
    convert(block, n);
    converted += MarkFailures(block, n);
    if (stride == 1) continue;
    for (std::size_t c = 0; c < kColumns; ++c) {
      double* to = source[c] + first;
      for (std::size_t i = 0; i < n; ++i, to += stride) *to = buffer[c][i];
    }
  }
  return converted;
}

/// Runs a conversion that has a column kernel, and holds for every point, over a block in place.
template <class Conversion>
void RunKernel(const Conversion& conversion, double* const (&columns)[Conversion::kColumns],
               std::size_t count) {
  const auto convert = simd::ForActiveSet(
      [](auto target) { return &simd::ColumnKernel<decltype(target), Conversion>::Convert; });
  convert(conversion, columns, count);
}

/// Runs a conversion that has a column kernel over a block in place, and `single`, which converts one
/// point, double (&point)[kColumns], over those of its points that the kernel does not serve: no
/// result depends on a point's neighbours.
template <class Conversion, class Single>
void RunKernel(const Conversion& conversion, double* const (&columns)[Conversion::kColumns],
               std::size_t count, Single single) {
  constexpr std::size_t N = Conversion::kColumns;
  const auto [servesAll, convert] = simd::ForActiveSet([](auto target) {
    using Kernel = simd::ColumnKernel<decltype(target), Conversion>;
    return std::pair{&Kernel::ServesAll, &Kernel::Convert};
  });
  if (servesAll(conversion, columns, count)) return convert(conversion, columns, count);

  double given[N][kBatchBlock];
  for (std::size_t c = 0; c < N; ++c) std::copy_n(columns[c], count, given[c]);
  convert(conversion, columns, count);
  for (std::size_t i = 0; i < count; ++i) {
    double point[N];
    for (std::size_t c = 0; c < N; ++c) point[c] = given[c][i];
    if (std::apply([&](auto... x) { return conversion.Serves(x...); }, std::to_array(point)))
      continue;
    single(point);
    for (std::size_t c = 0; c < N; ++c) columns[c][i] = point[c];
  }
}

/// ConvertBlocks with a conversion that has a column kernel and holds for every point.
template <class Conversion, class... Columns>
std::size_t ConvertColumns(const Conversion& conversion, std::size_t count, std::ptrdiff_t stride,
                           Columns*... coordinates) {
  const auto convert = [&](double* const(&columns)[sizeof...(Columns)], std::size_t n) {
    RunKernel(conversion, columns, n);
  };
  return ConvertBlocks(convert, count, stride, coordinates...);
}

}  // namespace zel_cs::geomath
