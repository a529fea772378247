#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <utility>

#include "geomath/base/batch_kernel.h"
#include "geomath/simd/column_kernel.h"
#include "geomath/simd/elementary.h"
#include "geomath/simd/instruction_set.h"

namespace zel_cs::geomath {

/// Whether all values lie between ±bound, a bound that is not negative; false with any NaN.
bool AllWithin(const double* values, std::size_t count, double bound);

/// Points of two or three numbers that stand side by side to columns, and back, or of nine to columns
/// of kMatrixBlock.
template <std::size_t N, std::size_t kRoom>
void Separate(const double* points, double (&columns)[N][kRoom], std::size_t count);
template <std::size_t N, std::size_t kRoom>
void Interleave(const double (&columns)[N][kRoom], double* points, std::size_t count);

/// Makes every point of a block without finite coordinates NaN in all columns; returns the number
/// of the others.
template <std::size_t N>
std::size_t MarkFailures(double* const (&columns)[N], std::size_t count);

/// Points of N coordinates, at least one, in a caller's arrays; the coordinates of point i stand at
/// arrays[i * stride]. Gives them out as contiguous columns, block by block: the arrays themselves
/// where they are columns, copies otherwise.
template <std::size_t N>
class StridedPoints {
 public:
  StridedPoints(double* const (&arrays)[N], std::ptrdiff_t stride) : stride_(stride) {
    sideBySide_ = stride == N;
    for (std::size_t c = 0; c < N; ++c) {
      arrays_[c] = arrays[c];
      sideBySide_ = sideBySide_ && (c == 0 || arrays[c] == arrays[c - 1] + 1);
      columns_[c] = copies_[c];
    }
  }

  /// The columns of `count` points from `start` on, to be converted in place.
  double* const (&Load(std::size_t start, std::size_t count))[N] {
    double* from[N];
    for (std::size_t c = 0; c < N; ++c) from[c] = At(c, start);
    if (stride_ == 1)
      std::copy_n(from, N, columns_);
    else if (sideBySide_)
      Separate(from[0], copies_, count);
    else
      for (std::size_t c = 0; c < N; ++c)
        for (std::size_t i = 0; i < count; ++i) copies_[c][i] = from[c][Offset(i)];
    return columns_;
  }

  /// Puts the columns of the last Load back into the arrays.
  void Store(std::size_t start, std::size_t count) {
    if (stride_ == 1) return;
    if (sideBySide_) return Interleave(copies_, At(0, start), count);
    for (std::size_t c = 0; c < N; ++c) {
      double* to = At(c, start);
      for (std::size_t i = 0; i < count; ++i) to[Offset(i)] = copies_[c][i];
    }
  }

 private:
  std::ptrdiff_t Offset(std::size_t i) const { return static_cast<std::ptrdiff_t>(i) * stride_; }
  double* At(std::size_t c, std::size_t i) const { return arrays_[c] + Offset(i); }

  double* arrays_[N];
  std::ptrdiff_t stride_;
  bool sideBySide_;  // the coordinates of a point, and the points
  double* columns_[N];
  double copies_[N][kBatchBlock];
};

/// Runs `convert`, a callable (double* const (&columns)[N], std::size_t count), over `count` points
/// in place, block by block; the coordinates of point i stand at coordinates[i * stride]. A point
/// whose result is not finite gets quiet NaN in every slot; a converter marks a failed point by any
/// coordinate that is not finite. Returns the number of points converted. Without points the arrays
/// may be null.
template <class Convert, class... Columns>
std::size_t ConvertBlocks(Convert&& convert, std::size_t count, std::ptrdiff_t stride,
                          Columns*... coordinates) {
  if (count == 0) return 0;
  if (count == 1) {
    convert({coordinates...}, count);
    const bool good = (std::isfinite(*coordinates) && ...);
    if (!good) ((*coordinates = std::numeric_limits<double>::quiet_NaN()), ...);
    return good ? 1 : 0;
  }
  StridedPoints<sizeof...(Columns)> points({coordinates...}, stride);
  std::size_t converted = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    const std::size_t n = std::min(kBatchBlock, count - start);
    auto& columns = points.Load(start, n);
    convert(columns, n);
    converted += MarkFailures(columns, n);
    points.Store(start, n);
  }
  return converted;
}

/// Applies `function` to the coordinates of point i of columns, as references.
template <std::size_t N, class Function>
auto ApplyAt(std::size_t i, double* const (&columns)[N], Function function) {
  return [&]<std::size_t... C>(std::index_sequence<C...>) { return function(columns[C][i]...); }
  (std::make_index_sequence<N>());
}

/// Whether a point alone runs without the loops of columns, in code of its own for each conversion. A
/// build whose size counts does without: the bits are those of the columns either way.
#ifdef GEOMATH_COMPACT
inline constexpr bool kPointsAlone = false;
#else
inline constexpr bool kPointsAlone = true;
#endif

/// A point alone, in place, by the statements of a conversion: the bits of its columns without their
/// loops.
template <class Conversion>
void ConvertOne(const Conversion& conversion, double* const (&point)[Conversion::kColumns]) {
  ApplyAt(0, point, [&](auto&... x) { conversion.template Convert<simd::BatchMath>(x...); });
}

/// How many of its columns a conversion reads, kInputs of them where it says so; the others it writes.
template <class Conversion>
constexpr std::size_t InputsOf() {
  if constexpr (requires { Conversion::kInputs; })
    return Conversion::kInputs;
  else
    return Conversion::kColumns;
}

/// Runs `single`, which converts one point, double (&point)[N], over point i of columns; one with NaN
/// in the columns that are read gives NaN.
template <std::size_t kInputs, std::size_t N, class Single>
void ConvertUnserved(std::size_t i, double* const (&columns)[N], Single single) {
  double point[N];
  for (std::size_t c = 0; c < N; ++c) point[c] = columns[c][i];
  const double sum = std::accumulate(point, point + kInputs, 0.0);
  if (std::isnan(sum))
    std::fill_n(point, N, sum);
  else
    single(point);
  for (std::size_t c = 0; c < N; ++c) columns[c][i] = point[c];
}

/// Runs a conversion that has a column kernel, and holds for every point, over a block in place.
template <class Conversion>
void RunKernel(const Conversion& conversion, double* const (&columns)[Conversion::kColumns],
               std::size_t count) {
  if constexpr (kPointsAlone)
    if (count == 1) return ConvertOne(conversion, columns);
  const auto convert = simd::ForActiveSet(
      [](auto target) { return &simd::ColumnKernel<decltype(target), Conversion>::Convert; });
  convert(conversion, columns, count);
}

/// Runs a conversion that has a column kernel over a block in place, and `single`, which converts one
/// point, double (&point)[kColumns], over those of its points that the kernel does not serve: no
/// result depends on a point's neighbours. A point with NaN gives NaN.
template <class Conversion, class Single>
void RunKernel(const Conversion& conversion, double* const (&columns)[Conversion::kColumns],
               std::size_t count, Single single) {
  constexpr std::size_t N = Conversion::kColumns, kInputs = InputsOf<Conversion>();
  const auto served = [&](std::size_t i, double* const(&points)[N]) {
    return ApplyAt(i, points, [&](auto... x) { return conversion.Serves(x...); });
  };
  if constexpr (kPointsAlone)
    if (count == 1)
      return served(0, columns) ? ConvertOne(conversion, columns)
                                : ConvertUnserved<kInputs>(0, columns, single);
  const auto [servesAll, convert] = simd::ForActiveSet([](auto target) {
    using Kernel = simd::ColumnKernel<decltype(target), Conversion>;
    return std::pair{&Kernel::ServesAll, &Kernel::Convert};
  });
  if (servesAll(conversion, columns, count)) return convert(conversion, columns, count);

  double given[N][kBatchBlock];
  for (std::size_t c = 0; c < N; ++c) std::copy_n(columns[c], count, given[c]);
  convert(conversion, columns, count);
  double* copies[N];
  for (std::size_t c = 0; c < N; ++c) copies[c] = given[c];
  for (std::size_t i = 0; i < count; ++i) {
    if (served(i, copies)) continue;
    ConvertUnserved<kInputs>(i, copies, single);
    for (std::size_t c = 0; c < N; ++c) columns[c][i] = given[c][i];
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
