#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace zel_cs::geomath {

/// Points of a batch that go through all steps together: small enough that their columns stay in
/// the first-level cache.
inline constexpr std::size_t kBatchBlock = 256;

/// Makes every point of a block without finite coordinates NaN in all columns; returns the number
/// of the others.
template <std::size_t N>
std::size_t MarkFailures(double* const (&columns)[N], std::size_t count) {
  std::size_t good = 0;
  for (std::size_t i = 0; i < count; ++i) {
    double probe = 0;  // x − x is 0 for a finite x and NaN otherwise
    for (double* column : columns) probe += column[i] - column[i];
    const bool finite = probe == 0;
    for (double* column : columns)
      column[i] = finite ? column[i] : std::numeric_limits<double>::quiet_NaN();
    good += finite;
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

/// Runs a column kernel over a block in place, and the single-point form over those of its points
/// that lie outside the kernel's domain, so that no result depends on a point's neighbours.
/// `inDomain` is a callable bool(const double (&point)[N]), false for NaN; `kernel` takes the columns
/// and their length; `single` converts one point, double (&point)[N], in place.
template <std::size_t N, class InDomain, class Kernel, class Single>
void RunKernel(double* const (&columns)[N], std::size_t count, InDomain inDomain, Kernel kernel,
               Single single) {
  const auto pointAt = [](const auto& from, std::size_t i, double(&point)[N]) {
    for (std::size_t c = 0; c < N; ++c) point[c] = from[c][i];
  };
  std::size_t inside = 0;
  for (std::size_t i = 0; i < count; ++i) {
    double point[N];
    pointAt(columns, i, point);
    inside += inDomain(point);
  }
  if (inside == count) return kernel(columns, count);

  double given[N][kBatchBlock];
  for (std::size_t c = 0; c < N; ++c) std::copy_n(columns[c], count, given[c]);
  kernel(columns, count);
  for (std::size_t i = 0; i < count; ++i) {
    double point[N];
    pointAt(given, i, point);
    if (inDomain(point)) continue;
    single(point);
    for (std::size_t c = 0; c < N; ++c) columns[c][i] = point[c];
  }
}

/// ConvertBlocks with a callable bool(double&, …) that converts one point.
template <class Convert, class... Columns>
std::size_t ConvertEach(Convert&& convert, std::size_t count, std::ptrdiff_t stride,
                        Columns*... coordinates) {
  const auto convertBlock = [&](double* const(&columns)[sizeof...(Columns)], std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      const bool ok = [&]<std::size_t... C>(std::index_sequence<C...>) {
        return convert(columns[C][i]...);
      }
      (std::index_sequence_for<Columns...>{});
      if (!ok) columns[0][i] = std::numeric_limits<double>::quiet_NaN();
    }
  };
  return ConvertBlocks(convertBlock, count, stride, coordinates...);
}

}  // namespace zel_cs::geomath
